package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.recording.Script;

/** A BTD of the recording registry; the adapter fills in uri and content. */
public class BTDDocument {
    final String name;
    String content;
    String uri;

    public BTDDocument(String name, String content) throws LxRecoverableException {
        this.name = name;
        this.content = content;
        Script.answer("BTDDocument.<init>", null, null, name, content);
    }

    private BTDDocument(String name) {
        this.name = name;
        this.content = "doc:" + name;
        this.uri = "/r/" + name;
    }

    static BTDDocument named(String name) {
        return new BTDDocument(name);
    }

    public String getName() throws LxRecoverableException {
        return (String) Script.answer("BTDDocument.getName", name, null);
    }

    public String getUri() throws LxRecoverableException {
        return (String) Script.answer("BTDDocument.getUri", uri, null);
    }

    public String getContent() throws LxRecoverableException {
        return (String) Script.answer("BTDDocument.getContent", content, null);
    }

    @Override
    public String toString() {
        return "BTD(" + name + "," + content + ")";
    }
}
