package com.vantor.broker.isr.migration;

/** Nothing to migrate: a registry in memory starts empty. */
public final class ISRMigration {
    private static final ISRMigration INSTANCE = new ISRMigration();

    public static ISRMigration getInstance() {
        return INSTANCE;
    }

    public boolean migrateISR() {
        return true;
    }
}
