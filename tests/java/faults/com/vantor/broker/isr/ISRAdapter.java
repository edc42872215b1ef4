package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.faults.Faults;

/**
 * The fault registry's adapter. Unarmed, it stores nothing and answers with canned values:
 * createBTD, updateBTD set the document's uri "/fault/btd/" + name; getBTD also content "content:" + name;
 * getBTDs: "a" and "b" with uris "/fault/btd/a", "/fault/btd/b";
 * createPolicy, updatePolicy set uri "/fault/policy/" + type + "/" + name; getPolicy also document "document:" + name;
 * getPolicyNames: "p1 p2"; getPoliciesWithoutDoc: "p1" and "p2" of that type;
 * getService(name): (name, "ns", "doc"); getServicesWithoutDoc: ("s1", "ns1"), ("s2", "ns2");
 * btdExists, policyExists, serviceExists: true; the rest only record their arguments.
 * It reads and fills the value objects through their fields, so that its own
 * work neither counts as a call nor trips an armed point.
 */
public final class ISRAdapter {
    private static final ISRAdapter INSTANCE = new ISRAdapter();

    private ISRAdapter() {}

    public static ISRAdapter getInstance() throws LxRecoverableException {
        return Faults.returning("ISRAdapter.getInstance", INSTANCE);
    }

    public void createPolicy(ISRPolicy policy) throws LxRecoverableException {
        Faults.enter("ISRAdapter.createPolicy", policy);
        policy.uri = policyUri(policy.type, policy.name);
    }

    public boolean policyExists(ISRPolicy policy) throws LxRecoverableException {
        Faults.enter("ISRAdapter.policyExists", policy);
        return Faults.result("ISRAdapter.policyExists", true);
    }

    public void getPolicy(ISRPolicy policy) throws LxRecoverableException {
        Faults.enter("ISRAdapter.getPolicy", policy);
        policy.uri = policyUri(policy.type, policy.name);
        policy.document = "document:" + policy.name;
    }

    public ISRPolicy[] getPoliciesWithoutDoc(String type) throws LxRecoverableException {
        Faults.enter("ISRAdapter.getPoliciesWithoutDoc", type);
        return Faults.result("ISRAdapter.getPoliciesWithoutDoc", new ISRPolicy[] {
            new ISRPolicy(type, "p1", null, policyUri(type, "p1")),
            new ISRPolicy(type, "p2", null, policyUri(type, "p2"))});
    }

    public void deletePolicy(ISRPolicy policy) throws LxRecoverableException {
        Faults.enter("ISRAdapter.deletePolicy", policy);
    }

    public void updatePolicy(ISRPolicy policy) throws LxRecoverableException {
        Faults.enter("ISRAdapter.updatePolicy", policy);
        policy.uri = policyUri(policy.type, policy.name);
    }

    public void setRepositoryDetails(String text1, String text2, String text3, boolean flag,
            String text5, String text6, int number) throws LxRecoverableException {
        Faults.enter("ISRAdapter.setRepositoryDetails", text1, text2, text3, flag, text5, text6, number);
    }

    public String getPolicyNames(String type) throws LxRecoverableException {
        Faults.enter("ISRAdapter.getPolicyNames", type);
        return Faults.result("ISRAdapter.getPolicyNames", "p1 p2");
    }

    public ISRService[] getServicesWithoutDoc() throws LxRecoverableException {
        return Faults.returning("ISRAdapter.getServicesWithoutDoc", new ISRService[] {
            new ISRService("s1", "ns1", null, serviceUri("ns1", "s1")),
            new ISRService("s2", "ns2", null, serviceUri("ns2", "s2"))});
    }

    public ISRService getService(String name) throws LxRecoverableException {
        Faults.enter("ISRAdapter.getService", name);
        return Faults.result("ISRAdapter.getService", new ISRService(name, "ns", "doc", serviceUri("ns", name)));
    }

    public void deleteService(String name) throws LxRecoverableException {
        Faults.enter("ISRAdapter.deleteService", name);
    }

    public boolean serviceExists(ISRService service) throws LxRecoverableException {
        Faults.enter("ISRAdapter.serviceExists", service);
        return Faults.result("ISRAdapter.serviceExists", true);
    }

    public void createService(ISRService service) throws LxRecoverableException {
        Faults.enter("ISRAdapter.createService", service);
    }

    public void createBTD(BTDDocument btd) throws LxRecoverableException {
        Faults.enter("ISRAdapter.createBTD", btd);
        btd.uri = btdUri(btd.name);
    }

    public void updateBTD(BTDDocument btd) throws LxRecoverableException {
        Faults.enter("ISRAdapter.updateBTD", btd);
        btd.uri = btdUri(btd.name);
    }

    public void deleteBTD(String name) throws LxRecoverableException {
        Faults.enter("ISRAdapter.deleteBTD", name);
    }

    public void getBTD(BTDDocument btd) throws LxRecoverableException {
        Faults.enter("ISRAdapter.getBTD", btd);
        btd.uri = btdUri(btd.name);
        btd.content = "content:" + btd.name;
    }

    public BTDDocument[] getBTDs() throws LxRecoverableException {
        return Faults.returning("ISRAdapter.getBTDs", new BTDDocument[] {
            new BTDDocument("a", "content:a", btdUri("a")),
            new BTDDocument("b", "content:b", btdUri("b"))});
    }

    public boolean btdExists(String name) throws LxRecoverableException {
        Faults.enter("ISRAdapter.btdExists", name);
        return Faults.result("ISRAdapter.btdExists", true);
    }

    private static String btdUri(String name) {
        return "/fault/btd/" + name;
    }

    private static String policyUri(String type, String name) {
        return "/fault/policy/" + type + "/" + name;
    }

    private static String serviceUri(String namespace, String name) {
        return "/fault/service/" + namespace + "/" + name;
    }
}
