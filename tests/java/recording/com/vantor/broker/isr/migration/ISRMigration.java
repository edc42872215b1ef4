package com.vantor.broker.isr.migration;

import legiorrug.recording.Script;

/** Migration of the recording registry. */
public final class ISRMigration {
    private static final ISRMigration INSTANCE = new ISRMigration();

    private ISRMigration() {}

    public static ISRMigration getInstance() throws Exception {
        return (ISRMigration) Script.answer("ISRMigration.getInstance", INSTANCE, null);
    }

    public boolean migrateISR() throws Exception { return (Boolean) Script.answer("ISRMigration.migrateISR", true, null); }
}
