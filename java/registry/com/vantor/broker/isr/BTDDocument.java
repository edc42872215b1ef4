package com.vantor.broker.isr;

/** A business transaction definition as it crosses the registry's interface; the registry fills in uri and content. */
public class BTDDocument {
    private final String name;
    private String content;
    private String uri;

    public BTDDocument(String name, String content) {
        this.name = name;
        this.content = content;
    }

    public String getName() {
        return name;
    }

    public String getContent() {
        return content;
    }

    public void setContent(String content) {
        this.content = content;
    }

    public String getUri() {
        return uri;
    }

    public void setUri(String uri) {
        this.uri = uri;
    }
}
