package com.vantor.broker.isr;

/**
 * The seven values last handed to {@link ISRAdapter#setRepositoryDetails},
 * named by position because the registry attaches no meaning to them.
 */
public record RepositoryDetails(String text1, String text2, String text3, boolean flag,
        String text5, String text6, int number) {
}
