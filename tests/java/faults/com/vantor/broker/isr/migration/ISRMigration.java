package com.vantor.broker.isr.migration;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.faults.Faults;

/** Migration of the fault registry: a singleton whose migration succeeds unless armed. */
public final class ISRMigration {
    private static final ISRMigration INSTANCE = new ISRMigration();

    private ISRMigration() {}

    public static ISRMigration getInstance() throws LxRecoverableException {
        return Faults.returning("ISRMigration.getInstance", INSTANCE);
    }

    public boolean migrateISR() throws LxRecoverableException {
        Faults.enter("ISRMigration.migrateISR");
        return Faults.result("ISRMigration.migrateISR", true);
    }
}
