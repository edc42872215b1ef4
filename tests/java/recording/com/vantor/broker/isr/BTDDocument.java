package com.vantor.broker.isr;

import legiorrug.recording.Script;

/** A BTD of the recording registry; the adapter fills in uri and content. */
public class BTDDocument {
    final String name;
    String content;
    String uri;

    public BTDDocument(String name, String content) throws Exception {
        this.name = name;
        this.content = content;
        Script.answer("BTDDocument.<init>", null, null, name, content);
    }

    /** An element of a listing, unrecorded. */
    BTDDocument(String name) {
        this.name = name;
        this.content = "doc:" + name;
        this.uri = "/r/" + name;
    }

    public String getName() throws Exception { return Script.text("BTDDocument.getName", name); }
    public String getUri() throws Exception { return Script.text("BTDDocument.getUri", uri); }
    public String getContent() throws Exception { return Script.text("BTDDocument.getContent", content); }

    /** Filled in by the adapter: the uri, and for a get the content. */
    void stored(boolean get) {
        uri = "/r/" + name;
        content = get ? "doc:" + name : content;
    }

    @Override
    public String toString() {
        return "BTD(" + name + "," + content + ")";
    }
}
