package com.vantor.broker.isr;

import legiorrug.recording.Script;

/** A policy of the recording registry; the adapter fills in uri and document. */
public class ISRPolicy {
    final String type;
    final String name;
    String document;
    String uri;

    public ISRPolicy(String type, String name, String document) throws Exception {
        this.type = type;
        this.name = name;
        this.document = document;
        Script.answer("ISRPolicy.<init>", null, null, type, name, document);
    }

    /** An element of a listing, unrecorded. */
    ISRPolicy(String name) {
        this.type = "T";
        this.name = name;
    }

    public String getName() throws Exception { return Script.text("ISRPolicy.getName", name); }
    public String getUri() throws Exception { return Script.text("ISRPolicy.getUri", uri); }
    public String getDocument() throws Exception { return Script.text("ISRPolicy.getDocument", document); }
    public void validateContent() throws Exception { Script.answer("ISRPolicy.validateContent", null, null); }

    /** Filled in by the adapter: the uri, and for a get the document. */
    void stored(boolean get) {
        uri = "/r/" + type + "/" + name;
        document = get ? "doc:" + name : document;
    }

    @Override
    public String toString() {
        return "Policy(" + type + "," + name + "," + document + ")";
    }
}
