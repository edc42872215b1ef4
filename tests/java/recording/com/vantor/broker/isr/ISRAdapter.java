package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.recording.Script;

/** The recording registry's adapter: stores nothing; fills in "/r/..." URIs and "doc:" documents. */
public final class ISRAdapter {
    private static final ISRAdapter INSTANCE = new ISRAdapter();

    private ISRAdapter() {}

    private static Object answer(String method, Object fallback, Object... args) throws LxRecoverableException {
        return Script.answer("ISRAdapter." + method, fallback, null, args);
    }

    public static ISRAdapter getInstance() throws LxRecoverableException {
        return (ISRAdapter) answer("getInstance", INSTANCE);
    }

    public void createPolicy(ISRPolicy p) throws LxRecoverableException {
        answer("createPolicy", null, p);
        p.uri = "/r/" + p.type + "/" + p.name;
    }

    public void updatePolicy(ISRPolicy p) throws LxRecoverableException {
        answer("updatePolicy", null, p);
        p.uri = "/r/" + p.type + "/" + p.name;
    }

    public boolean policyExists(ISRPolicy p) throws LxRecoverableException {
        return (Boolean) answer("policyExists", true, p);
    }

    public void getPolicy(ISRPolicy p) throws LxRecoverableException {
        answer("getPolicy", null, p);
        p.uri = "/r/" + p.type + "/" + p.name;
        p.document = "doc:" + p.name;
    }

    public ISRPolicy[] getPoliciesWithoutDoc(String type) throws LxRecoverableException {
        return (ISRPolicy[]) Script.answer("ISRAdapter.getPoliciesWithoutDoc",
                new ISRPolicy[] {new ISRPolicy("p1"), new ISRPolicy("p2")}, ISRPolicy::new, type);
    }

    public void deletePolicy(ISRPolicy p) throws LxRecoverableException {
        answer("deletePolicy", null, p);
    }

    public void setRepositoryDetails(String t1, String t2, String t3, boolean flag, String t5, String t6, int n)
            throws LxRecoverableException {
        answer("setRepositoryDetails", null, t1, t2, t3, flag, t5, t6, n);
    }

    public String getPolicyNames(String type) throws LxRecoverableException {
        return (String) answer("getPolicyNames", "p1 p2", type);
    }

    public ISRService[] getServicesWithoutDoc() throws LxRecoverableException {
        return (ISRService[]) Script.answer("ISRAdapter.getServicesWithoutDoc",
                new ISRService[] {new ISRService("s1"), new ISRService("s2")}, ISRService::new);
    }

    public ISRService getService(String name) throws LxRecoverableException {
        return (ISRService) Script.answer("ISRAdapter.getService", new ISRService(name), ISRService::new, name);
    }

    public void deleteService(String name) throws LxRecoverableException {
        answer("deleteService", null, name);
    }

    public boolean serviceExists(ISRService s) throws LxRecoverableException {
        return (Boolean) answer("serviceExists", true, s);
    }

    public void createService(ISRService s) throws LxRecoverableException {
        answer("createService", null, s);
    }

    public void createBTD(BTDDocument b) throws LxRecoverableException {
        answer("createBTD", null, b);
        b.uri = "/r/" + b.name;
    }

    public void updateBTD(BTDDocument b) throws LxRecoverableException {
        answer("updateBTD", null, b);
        b.uri = "/r/" + b.name;
    }

    public void deleteBTD(String name) throws LxRecoverableException {
        answer("deleteBTD", null, name);
    }

    public void getBTD(BTDDocument b) throws LxRecoverableException {
        answer("getBTD", null, b);
        b.uri = "/r/" + b.name;
        b.content = "doc:" + b.name;
    }

    public BTDDocument[] getBTDs() throws LxRecoverableException {
        return (BTDDocument[]) Script.answer("ISRAdapter.getBTDs",
                new BTDDocument[] {new BTDDocument("a"), new BTDDocument("b")}, BTDDocument::new);
    }

    public boolean btdExists(String name) throws LxRecoverableException {
        return (Boolean) answer("btdExists", true, name);
    }
}
