package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;

/** A policy as it crosses the registry's interface; the registry fills in uri and document. */
public class ISRPolicy {
    private final String type;
    private final String name;
    private String document;
    private String uri;

    public ISRPolicy(String type, String name, String document) {
        this.type = type;
        this.name = name;
        this.document = document;
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

    public void setDocument(String document) {
        this.document = document;
    }

    public String getUri() {
        return uri;
    }

    public void setUri(String uri) {
        this.uri = uri;
    }

    /**
     * Accepts any document with at least one non-whitespace character; the
     * registry stores documents verbatim and does not parse them.
     */
    public void validateContent() throws LxRecoverableException {
        if (document == null || document.isBlank()) {
            throw RegistryMessages.invalidDocument(type, name);
        }
    }
}
