package com.vantor.broker.isr.migration;

import java.util.concurrent.atomic.AtomicInteger;

/** Policy migration of the reference registry: there is nothing to migrate, so it only counts the requests. */
public final class ISRMigration {
    private static final ISRMigration INSTANCE = new ISRMigration();

    private final AtomicInteger migrations = new AtomicInteger();

    private ISRMigration() {
    }

    public static ISRMigration getInstance() {
        return INSTANCE;
    }

    /** Always succeeds. */
    public boolean migrateISR() {
        migrations.incrementAndGet();
        return true;
    }

    public int migrationCount() {
        return migrations.get();
    }

    public void reset() {
        migrations.set(0);
    }
}
