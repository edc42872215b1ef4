package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.recording.Script;

/** A service of the recording registry. */
public class ISRService {
    final String name;
    final String namespace;
    final String document;

    public ISRService(String name, String namespace, String document) throws LxRecoverableException {
        this.name = name;
        this.namespace = namespace;
        this.document = document;
        Script.answer("ISRService.<init>", null, null, name, namespace, document);
    }

    public ISRService(String name, String namespace) throws LxRecoverableException {
        this.name = name;
        this.namespace = namespace;
        this.document = null;
        Script.answer("ISRService.<init>", null, null, name, namespace);
    }

    /** An element of a listing or a found service, unrecorded. */
    ISRService(String name) {
        this.name = name;
        this.namespace = "ns:" + name;
        this.document = "doc:" + name;
    }

    public String getUri() throws LxRecoverableException {
        return (String) Script.answer("ISRService.getUri", "/r/" + name, null);
    }

    public String getDocument() throws LxRecoverableException {
        return (String) Script.answer("ISRService.getDocument", document, null);
    }

    public String getName() throws LxRecoverableException {
        return (String) Script.answer("ISRService.getName", name, null);
    }

    public String getNamespace() throws LxRecoverableException {
        return (String) Script.answer("ISRService.getNamespace", namespace, null);
    }

    @Override
    public String toString() {
        return "Service(" + name + "," + namespace + "," + document + ")";
    }
}
