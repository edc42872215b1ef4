package com.vantor.broker.isr;

/** A BTD as it crosses to and from the library: the registry fills in the URI, and the content on a read. */
public final class BTDDocument {
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

    public String getUri() {
        return uri;
    }

    void setContent(String content) {
        this.content = content;
    }

    void setUri(String uri) {
        this.uri = uri;
    }
}
