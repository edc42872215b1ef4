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

    public void createPolicy(ISRPolicy policy) throws LxRecoverableException {
        answer("createPolicy", null, policy);
        policy.uri = "/r/" + policy.type + "/" + policy.name;
    }

    public void updatePolicy(ISRPolicy policy) throws LxRecoverableException {
        answer("updatePolicy", null, policy);
        policy.uri = "/r/" + policy.type + "/" + policy.name;
    }

    public boolean policyExists(ISRPolicy policy) throws LxRecoverableException {
        return (Boolean) answer("policyExists", true, policy);
    }

    public void getPolicy(ISRPolicy policy) throws LxRecoverableException {
        answer("getPolicy", null, policy);
        policy.uri = "/r/" + policy.type + "/" + policy.name;
        policy.document = "doc:" + policy.name;
    }

    public ISRPolicy[] getPoliciesWithoutDoc(String type) throws LxRecoverableException {
        return (ISRPolicy[]) Script.answer("ISRAdapter.getPoliciesWithoutDoc",
                new ISRPolicy[] {ISRPolicy.named("p1"), ISRPolicy.named("p2")}, ISRPolicy::named, type);
    }

    public void deletePolicy(ISRPolicy policy) throws LxRecoverableException {
        answer("deletePolicy", null, policy);
    }

    public void setRepositoryDetails(String text1, String text2, String text3, boolean flag, String text5,
            String text6, int number) throws LxRecoverableException {
        answer("setRepositoryDetails", null, text1, text2, text3, flag, text5, text6, number);
    }

    public String getPolicyNames(String type) throws LxRecoverableException {
        return (String) answer("getPolicyNames", "p1 p2", type);
    }

    public ISRService[] getServicesWithoutDoc() throws LxRecoverableException {
        return (ISRService[]) Script.answer("ISRAdapter.getServicesWithoutDoc",
                new ISRService[] {ISRService.named("s1"), ISRService.named("s2")}, ISRService::named);
    }

    public ISRService getService(String name) throws LxRecoverableException {
        return (ISRService) Script.answer("ISRAdapter.getService", ISRService.named(name), ISRService::named, name);
    }

    public void deleteService(String name) throws LxRecoverableException {
        answer("deleteService", null, name);
    }

    public boolean serviceExists(ISRService service) throws LxRecoverableException {
        return (Boolean) answer("serviceExists", true, service);
    }

    public void createService(ISRService service) throws LxRecoverableException {
        answer("createService", null, service);
    }

    public void createBTD(BTDDocument btd) throws LxRecoverableException {
        answer("createBTD", null, btd);
        btd.uri = "/r/" + btd.name;
    }

    public void updateBTD(BTDDocument btd) throws LxRecoverableException {
        answer("updateBTD", null, btd);
        btd.uri = "/r/" + btd.name;
    }

    public void deleteBTD(String name) throws LxRecoverableException {
        answer("deleteBTD", null, name);
    }

    public void getBTD(BTDDocument btd) throws LxRecoverableException {
        answer("getBTD", null, btd);
        btd.uri = "/r/" + btd.name;
        btd.content = "doc:" + btd.name;
    }

    public BTDDocument[] getBTDs() throws LxRecoverableException {
        return (BTDDocument[]) Script.answer("ISRAdapter.getBTDs",
                new BTDDocument[] {BTDDocument.named("a"), BTDDocument.named("b")}, BTDDocument::named);
    }

    public boolean btdExists(String name) throws LxRecoverableException {
        return (Boolean) answer("btdExists", true, name);
    }
}
