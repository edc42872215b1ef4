package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;

/** A policy as it crosses to and from the library: the registry fills in the URI, and the document on a read. */
public final class ISRPolicy {
    private final String type;
    private final String name;
    private String document;
    private String uri;

    public ISRPolicy(String type, String name, String document) {
        this.type = type;
        this.name = name;
        this.document = document;
    }

    /** The library calls it before it stores a policy. */
    public void validateContent() throws LxRecoverableException {
        if (document == null) {
            throw new LxRecoverableException(9002L, "A policy needs a document", type, name);
        }
    }

    public String getType() {
        return type;
    }

    public String getName() {
        return name;
    }

    public String getDocument() {
        return document;
    }

    public String getUri() {
        return uri;
    }

    void setDocument(String document) {
        this.document = document;
    }

    void setUri(String uri) {
        this.uri = uri;
    }
}
