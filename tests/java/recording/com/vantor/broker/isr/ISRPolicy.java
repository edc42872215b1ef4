package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.recording.Script;

/** A policy of the recording registry; the adapter fills in uri and document. */
public class ISRPolicy {
    final String type;
    final String name;
    String document;
    String uri;

    public ISRPolicy(String type, String name, String document) throws LxRecoverableException {
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

    public String getName() throws LxRecoverableException {
        return (String) Script.answer("ISRPolicy.getName", name, null);
    }

    public String getUri() throws LxRecoverableException {
        return (String) Script.answer("ISRPolicy.getUri", uri, null);
    }

    public String getDocument() throws LxRecoverableException {
        return (String) Script.answer("ISRPolicy.getDocument", document, null);
    }

    public void validateContent() throws LxRecoverableException {
        Script.answer("ISRPolicy.validateContent", null, null);
    }

    @Override
    public String toString() {
        return "Policy(" + type + "," + name + "," + document + ")";
    }
}
