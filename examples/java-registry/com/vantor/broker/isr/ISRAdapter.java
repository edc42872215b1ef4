package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;

/**
 * A registry kept in memory, the smallest that passes legiorrug --check-registry. One instance for every
 * call and thread, concurrent maps so that a write is seen by every thread once it returns, and an
 * LxRecoverableException with a number, a trace text and the entry's name for an entry that is missing.
 * A create of something present replaces it and a delete of something missing does nothing: both are
 * the registry's to choose.
 */
public final class ISRAdapter {
    private static final ISRAdapter INSTANCE = new ISRAdapter();
    private static final long MISSING = 9001L;

    private final Map<String, String> btds = new ConcurrentHashMap<>();
    private final Map<String, Map<String, String>> policies = new ConcurrentHashMap<>(); // by type, then name
    private final Map<String, ISRService> services = new ConcurrentHashMap<>();

    public static ISRAdapter getInstance() {
        return INSTANCE;
    }

    private static <T> T found(T value, String what, String name) throws LxRecoverableException {
        if (value == null) {
            throw new LxRecoverableException(MISSING, what + " does not exist", name);
        }
        return value;
    }

    private static String btdUri(String name) {
        return "/btds/" + name;
    }

    public void createBTD(BTDDocument btd) {
        btds.put(btd.getName(), btd.getContent());
        btd.setUri(btdUri(btd.getName()));
    }

    public void updateBTD(BTDDocument btd) throws LxRecoverableException {
        found(btds.replace(btd.getName(), btd.getContent()), "The BTD", btd.getName());
        btd.setUri(btdUri(btd.getName()));
    }

    public void getBTD(BTDDocument btd) throws LxRecoverableException {
        btd.setContent(found(btds.get(btd.getName()), "The BTD", btd.getName()));
        btd.setUri(btdUri(btd.getName()));
    }

    public void deleteBTD(String name) {
        btds.remove(name);
    }

    public boolean btdExists(String name) {
        return btds.containsKey(name);
    }

    public BTDDocument[] getBTDs() {
        return btds.keySet().stream().map(name -> {
            BTDDocument btd = new BTDDocument(name, null);
            btd.setUri(btdUri(name));
            return btd;
        }).toArray(BTDDocument[]::new);
    }

    private Map<String, String> ofType(String type) {
        return policies.computeIfAbsent(type, t -> new ConcurrentHashMap<>());
    }

    private static String policyUri(ISRPolicy policy) {
        return "/policies/" + policy.getType() + "/" + policy.getName();
    }

    public void createPolicy(ISRPolicy policy) throws LxRecoverableException {
        policy.validateContent();
        ofType(policy.getType()).put(policy.getName(), policy.getDocument());
        policy.setUri(policyUri(policy));
    }

    public void updatePolicy(ISRPolicy policy) throws LxRecoverableException {
        policy.validateContent();
        found(ofType(policy.getType()).replace(policy.getName(), policy.getDocument()), "The policy",
              policy.getName());
        policy.setUri(policyUri(policy));
    }

    public void getPolicy(ISRPolicy policy) throws LxRecoverableException {
        policy.setDocument(found(ofType(policy.getType()).get(policy.getName()), "The policy", policy.getName()));
        policy.setUri(policyUri(policy));
    }

    public void deletePolicy(ISRPolicy policy) {
        ofType(policy.getType()).remove(policy.getName());
    }

    public boolean policyExists(ISRPolicy policy) {
        return ofType(policy.getType()).containsKey(policy.getName());
    }

    public ISRPolicy[] getPoliciesWithoutDoc(String type) {
        return ofType(type).keySet().stream().map(name -> new ISRPolicy(type, name, null)).toArray(ISRPolicy[]::new);
    }

    public String getPolicyNames(String type) {
        return String.join(" ", ofType(type).keySet());
    }

    public void createService(ISRService service) {
        services.put(service.getName(), service);
    }

    public boolean serviceExists(ISRService service) {
        ISRService stored = services.get(service.getName());
        return stored != null && stored.getNamespace().equals(service.getNamespace());
    }

    public ISRService getService(String name) {
        return services.get(name);
    }

    public void deleteService(String name) {
        services.remove(name);
    }

    public ISRService[] getServicesWithoutDoc() {
        return services.values().stream().map(s -> new ISRService(s.getName(), s.getNamespace()))
                .toArray(ISRService[]::new);
    }

    public void setRepositoryDetails(String host, String user, String password, boolean secure, String name,
                                     String path, int port) {
    }
}
