package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.recording.Script;

/** A BTD of the recording registry; the adapter fills in uri and content. */
public class BTDDocument {
    final String name;
    String content;
    String uri;

    public BTDDocument(String name, String content) throws LxRecoverableException {
        this.name = name;
        this.content = content;
        Script.answer("BTDDocument.<init>", null, null, name, content);
    }

    /** An element of a listing, unrecorded. */
    BTDDocument(String name) {
        this(name, "doc:" + name, "/r/" + name);
    }

    private BTDDocument(String name, String content, String uri) {
        this.name = name;
        this.content = content;
        this.uri = uri;
    }

    public String getName() throws LxRecoverableException {
        return (String) Script.answer("BTDDocument.getName", name, null);
    }

    public String getUri() throws LxRecoverableException {
        return (String) Script.answer("BTDDocument.getUri", uri, null);
    }

    public String getContent() throws LxRecoverableException {
        return (String) Script.answer("BTDDocument.getContent", content, null);
    }

    @Override
    public String toString() {
        return "BTD(" + name + "," + content + ")";
    }
}
