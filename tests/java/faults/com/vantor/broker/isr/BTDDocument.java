package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.faults.Faults;

/** A BTD of the fault registry; the fault ISRAdapter fills in uri and content through the fields. */
public class BTDDocument {
    final String name;
    String content;
    String uri;

    public BTDDocument(String name, String content) throws LxRecoverableException {
        this(name, content, null);
        Faults.enter("BTDDocument.<init>", name, content);
    }

    /** For the adapter's canned results: no call point. */
    BTDDocument(String name, String content, String uri) {
        this.name = name;
        this.content = content;
        this.uri = uri;
    }

    public String getName() throws LxRecoverableException {
        return Faults.returning("BTDDocument.getName", name);
    }

    public String getUri() throws LxRecoverableException {
        return Faults.returning("BTDDocument.getUri", uri);
    }

    public String getContent() throws LxRecoverableException {
        return Faults.returning("BTDDocument.getContent", content);
    }
}
