package com.vantor.broker.isr;

import legiorrug.recording.Script;

/** The recording registry's adapter: stores nothing; fills in "/r/..." URIs and "doc:" documents. */
public final class ISRAdapter {
    private static final ISRAdapter INSTANCE = new ISRAdapter();

    private ISRAdapter() {}

    private static Object answer(String method, Object fallback, Object... args) throws Exception {
        return Script.answer("ISRAdapter." + method, fallback, null, args);
    }

    public static ISRAdapter getInstance() throws Exception {
        return (ISRAdapter) answer("getInstance", INSTANCE);
    }

    public void createPolicy(ISRPolicy p) throws Exception { answer("createPolicy", null, p); p.stored(false); }

    public void updatePolicy(ISRPolicy p) throws Exception { answer("updatePolicy", null, p); p.stored(false); }

    public void getPolicy(ISRPolicy p) throws Exception { answer("getPolicy", null, p); p.stored(true); }

    public ISRPolicy[] getPoliciesWithoutDoc(String type) throws Exception {
        return (ISRPolicy[]) Script.answer("ISRAdapter.getPoliciesWithoutDoc",
                new ISRPolicy[] {new ISRPolicy("p1"), new ISRPolicy("p2")}, ISRPolicy::new, type);
    }

    public ISRService[] getServicesWithoutDoc() throws Exception {
        return (ISRService[]) Script.answer("ISRAdapter.getServicesWithoutDoc",
                new ISRService[] {new ISRService("s1"), new ISRService("s2")}, ISRService::new);
    }

    public ISRService getService(String name) throws Exception {
        return (ISRService) Script.answer("ISRAdapter.getService", new ISRService(name), ISRService::new, name);
    }

    public void createBTD(BTDDocument b) throws Exception { answer("createBTD", null, b); b.stored(false); }

    public void updateBTD(BTDDocument b) throws Exception { answer("updateBTD", null, b); b.stored(false); }

    public void getBTD(BTDDocument b) throws Exception { answer("getBTD", null, b); b.stored(true); }

    public BTDDocument[] getBTDs() throws Exception {
        return (BTDDocument[]) Script.answer("ISRAdapter.getBTDs",
                new BTDDocument[] {new BTDDocument("a"), new BTDDocument("b")}, BTDDocument::new);
    }

    // Calls that only answer.
    public boolean policyExists(ISRPolicy p) throws Exception { return (Boolean) answer("policyExists", true, p); }
    public void deletePolicy(ISRPolicy p) throws Exception { answer("deletePolicy", null, p); }
    public String getPolicyNames(String t) throws Exception { return (String) answer("getPolicyNames", "p1 p2", t); }
    public void deleteService(String name) throws Exception { answer("deleteService", null, name); }
    public boolean serviceExists(ISRService s) throws Exception { return (Boolean) answer("serviceExists", true, s); }
    public void createService(ISRService s) throws Exception { answer("createService", null, s); }
    public void deleteBTD(String name) throws Exception { answer("deleteBTD", null, name); }
    public boolean btdExists(String name) throws Exception { return (Boolean) answer("btdExists", true, name); }

    public void setRepositoryDetails(String t1, String t2, String t3, boolean flag, String t5, String t6, int n)
            throws Exception {
        answer("setRepositoryDetails", null, t1, t2, t3, flag, t5, t6, n);
    }
}
