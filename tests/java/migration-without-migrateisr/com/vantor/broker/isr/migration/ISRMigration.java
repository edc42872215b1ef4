package com.vantor.broker.isr.migration;

/** A migration class that lacks migrateISR, put ahead of the registry jar. */
public final class ISRMigration {
    private static final ISRMigration INSTANCE = new ISRMigration();

    private ISRMigration() {
    }

    public static ISRMigration getInstance() {
        return INSTANCE;
    }
}
