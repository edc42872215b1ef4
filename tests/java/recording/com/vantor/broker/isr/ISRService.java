package com.vantor.broker.isr;

import legiorrug.recording.Script;

/** A service of the recording registry. */
public class ISRService {
    final String name;
    final String namespace;
    final String document;

    public ISRService(String name, String namespace, String document) throws Exception {
        this(name, namespace, document, name, namespace, document);
    }

    public ISRService(String name, String namespace) throws Exception {
        this(name, namespace, null, name, namespace);
    }

    private ISRService(String name, String namespace, String document, Object... args) throws Exception {
        this.name = name;
        this.namespace = namespace;
        this.document = document;
        Script.answer("ISRService.<init>", null, null, args);
    }

    /** An element of a listing or a found service, unrecorded. */
    ISRService(String name) {
        this.name = name;
        this.namespace = "ns:" + name;
        this.document = "doc:" + name;
    }

    public String getUri() throws Exception { return Script.text("ISRService.getUri", "/r/" + name); }
    public String getDocument() throws Exception { return Script.text("ISRService.getDocument", document); }
    public String getName() throws Exception { return Script.text("ISRService.getName", name); }
    public String getNamespace() throws Exception { return Script.text("ISRService.getNamespace", namespace); }

    @Override
    public String toString() {
        return "Service(" + name + "," + namespace + "," + document + ")";
    }
}
