package com.vantor.broker.isr;

/** A service: a name in a namespace, with a document. */
public final class ISRService {
    private final String name;
    private final String namespace;
    private final String document;

    public ISRService(String name, String namespace, String document) {
        this.name = name;
        this.namespace = namespace;
        this.document = document;
    }

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
        return "/services/" + name;
    }
}
