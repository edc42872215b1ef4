package com.vantor.broker.isr.migration;

/** A migration class whose migrateISR answers nothing, where a boolean is expected. */
public final class ISRMigration {
    private static final ISRMigration INSTANCE = new ISRMigration();

    public static ISRMigration getInstance() {
        return INSTANCE;
    }

    public void migrateISR() {
    }
}
