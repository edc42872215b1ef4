package com.vantor.broker.isr;

/** A service entry: a name, the namespace it lives in, and its document. */
public class ISRService {
    private final String name;
    private final String namespace;
    private final String document;
    private String uri;

    public ISRService(String name, String namespace, String document) {
        this.name = name;
        this.namespace = namespace;
        this.document = document;
    }

    /** For lookups and listings, which carry no document. */
    public ISRService(String name, String namespace) {
        this(name, namespace, null);
    }

    public String getName() {
        return name;
    }

    public String getNamespace() {
        return namespace;
    }

    public String getDocument() {
        return document;
    }

    public String getUri() {
        return uri;
    }

    public void setUri(String uri) {
        this.uri = uri;
    }
}
