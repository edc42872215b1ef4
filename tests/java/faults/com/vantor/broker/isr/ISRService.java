package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.faults.Faults;

/** A service of the fault registry; its constructors are points "ISRService.<init>3" and "ISRService.<init>2". */
public class ISRService {
    final String name;
    final String namespace;
    final String document;
    final String uri;

    public ISRService(String name, String namespace, String document) throws LxRecoverableException {
        this(name, namespace, document, null);
        Faults.enter("ISRService.<init>3", name, namespace, document);
    }

    public ISRService(String name, String namespace) throws LxRecoverableException {
        this(name, namespace, null, null);
        Faults.enter("ISRService.<init>2", name, namespace);
    }

    /** For the adapter's canned results: no call point. */
    ISRService(String name, String namespace, String document, String uri) {
        this.name = name;
        this.namespace = namespace;
        this.document = document;
        this.uri = uri;
    }

    public String getUri() throws LxRecoverableException {
        return Faults.returning("ISRService.getUri", uri);
    }

    public String getDocument() throws LxRecoverableException {
        return Faults.returning("ISRService.getDocument", document);
    }

    public String getName() throws LxRecoverableException {
        return Faults.returning("ISRService.getName", name);
    }

    public String getNamespace() throws LxRecoverableException {
        return Faults.returning("ISRService.getNamespace", namespace);
    }
}
