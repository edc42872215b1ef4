package com.vantor.broker.isr;

import static com.vantor.broker.isr.RegistryMessages.required;

import java.util.HashMap;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;

// Ahead of the reference registry's jar, with the fault named by -Dlegiorrug.fault: null-uri, plain-exception,
// unsynchronised (a HashMap walked while others write), null-element, cut-at-nul, new-instance, late-write (a thread's
// BTD writes held until its next call), null-trace-text; replace and
// silent-delete differ from the reference only where the library lets a registry choose.
public final class ISRAdapter {
    private static final String FAULT = System.getProperty("legiorrug.fault", "");
    private static final ISRAdapter INSTANCE = new ISRAdapter();

    private final Map<String, String> btds = FAULT.equals("unsynchronised") ? new HashMap<>() : new ConcurrentHashMap<>();
    private final Map<String, String> policies = new ConcurrentHashMap<>();
    private final Map<String, ISRService> services = new ConcurrentHashMap<>();

    private static final ThreadLocal<java.util.List<Runnable>> LATE = ThreadLocal.withInitial(java.util.ArrayList::new);

    private static void write(Runnable change) { LATE.get().add(change); if (!FAULT.equals("late-write")) flush(); }

    private static void flush() { LATE.get().forEach(Runnable::run); LATE.get().clear(); }

    public static ISRAdapter getInstance() { return FAULT.equals("new-instance") ? new ISRAdapter() : INSTANCE; }

    private static String btdUri(String name) { return "/btd/" + name; }

    private String existingBtd(String name) throws Exception {
        flush();
        String content = btds.get(required(name, "name"));
        if (content == null && FAULT.equals("plain-exception")) {
            throw new RuntimeException("no BTD " + name);
        }
        if (content == null && FAULT.equals("null-trace-text")) {
            throw new com.vantor.broker.plugin.LxRecoverableException(RegistryMessages.BTD_MISSING, null, name, new Object());
        }
        if (content == null) {
            throw RegistryMessages.btdMissing(name);
        }
        return content;
    }

    private static String content(BTDDocument b) throws Exception {
        String content = required(b.getContent(), "content");
        return FAULT.equals("cut-at-nul") ? content.split("\u0000", -1)[0] : content;
    }

    public void createBTD(BTDDocument b) throws Exception {
        flush();
        String content = content(b);
        if (!FAULT.equals("replace") && btds.containsKey(b.getName())) {
            throw RegistryMessages.btdExists(b.getName());
        }
        write(() -> btds.put(b.getName(), content));
        b.setUri(FAULT.equals("null-uri") ? null : btdUri(b.getName()));
    }

    public void updateBTD(BTDDocument b) throws Exception {
        existingBtd(b.getName());
        String content = content(b);
        write(() -> btds.put(b.getName(), content));
        b.setUri(btdUri(b.getName()));
    }

    public void getBTD(BTDDocument b) throws Exception {
        b.setContent(existingBtd(b.getName()));
        b.setUri(btdUri(b.getName()));
    }

    public void deleteBTD(String name) throws Exception {
        if (!FAULT.equals("silent-delete")) existingBtd(name);
        write(() -> btds.remove(name));
    }

    public boolean btdExists(String name) { flush(); return btds.containsKey(name); }

    public BTDDocument[] getBTDs() {
        flush();
        var listed = new java.util.ArrayList<BTDDocument>();
        for (Map.Entry<String, String> entry : btds.entrySet()) {
            var btd = new BTDDocument(entry.getKey(), entry.getValue());
            btd.setUri(btdUri(entry.getKey()));
            listed.add(btd);
            Thread.yield();
        }
        if (FAULT.equals("null-element")) listed.add(null);
        return listed.toArray(new BTDDocument[0]);
    }

    private static String key(ISRPolicy p) { return p.getType() + "\u0001" + p.getName(); }

    public void createPolicy(ISRPolicy p) throws Exception {
        p.validateContent();
        if (policies.putIfAbsent(key(p), p.getDocument()) != null) throw RegistryMessages.policyExists(p.getType(), p.getName());
        p.setUri("/policy/" + key(p));
    }

    public void updatePolicy(ISRPolicy p) throws Exception {
        p.validateContent();
        existing(p, policies.replace(key(p), p.getDocument()));
        p.setUri("/policy/" + key(p));
    }

    private static String existing(ISRPolicy p, String document) throws Exception {
        if (document == null) throw RegistryMessages.policyMissing(p.getType(), p.getName());
        return document;
    }

    public void getPolicy(ISRPolicy p) throws Exception {
        p.setDocument(existing(p, policies.get(key(p))));
        p.setUri("/policy/" + key(p));
    }

    public void deletePolicy(ISRPolicy p) throws Exception { existing(p, policies.remove(key(p))); }

    public boolean policyExists(ISRPolicy p) { return policies.containsKey(key(p)); }

    public ISRPolicy[] getPoliciesWithoutDoc(String type) {
        return policies.keySet().stream().filter(k -> k.startsWith(type + "\u0001"))
                .map(k -> new ISRPolicy(type, k.substring(type.length() + 1), null)).toArray(ISRPolicy[]::new);
    }

    public String getPolicyNames(String type) {
        return String.join(" ", java.util.Arrays.stream(getPoliciesWithoutDoc(type)).map(ISRPolicy::getName).toArray(String[]::new));
    }

    public void createService(ISRService s) { services.put(s.getName(), s); }

    public boolean serviceExists(ISRService s) {
        ISRService stored = services.get(s.getName());
        return stored != null && stored.getNamespace().equals(s.getNamespace());
    }

    public ISRService getService(String name) { return services.get(name); }

    public void deleteService(String name) throws Exception {
        if (services.remove(name) == null) {
            throw RegistryMessages.serviceMissing(name);
        }
    }

    public ISRService[] getServicesWithoutDoc() {
        return services.values().stream().map(s -> new ISRService(s.getName(), s.getNamespace()))
                .toArray(ISRService[]::new);
    }

    public void setRepositoryDetails(String t1, String t2, String t3, boolean flag, String t5, String t6, int n) {}
}
