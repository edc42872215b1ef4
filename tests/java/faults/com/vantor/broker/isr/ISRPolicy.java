package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.faults.Faults;

/** A policy of the fault registry; the fault ISRAdapter fills in uri and document through the fields. */
public class ISRPolicy {
    final String type;
    final String name;
    String document;
    String uri;

    public ISRPolicy(String type, String name, String document) throws LxRecoverableException {
        this(type, name, document, null);
        Faults.enter("ISRPolicy.<init>", type, name, document);
    }

    /** For the adapter's canned results: no call point. */
    ISRPolicy(String type, String name, String document, String uri) {
        this.type = type;
        this.name = name;
        this.document = document;
        this.uri = uri;
    }

    public String getName() throws LxRecoverableException {
        return Faults.returning("ISRPolicy.getName", name);
    }

    public String getUri() throws LxRecoverableException {
        return Faults.returning("ISRPolicy.getUri", uri);
    }

    public String getDocument() throws LxRecoverableException {
        return Faults.returning("ISRPolicy.getDocument", document);
    }

    /** Accepts every document: rejection is a fault to arm. */
    public void validateContent() throws LxRecoverableException {
        Faults.enter("ISRPolicy.validateContent");
    }
}
