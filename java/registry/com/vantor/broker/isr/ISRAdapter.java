package com.vantor.broker.isr;

import static com.vantor.broker.isr.RegistryMessages.required;

import com.vantor.broker.config.proxy.MessageFlowProxy;
import com.vantor.broker.isr.migration.ISRMigration;
import com.vantor.broker.plugin.LxRecoverableException;
import java.util.Map;
import java.util.concurrent.ConcurrentSkipListMap;

/**
 * The reference integration registry: keeps policies, business transaction
 * definitions (BTDs) and services in memory. Its maps are concurrent and each
 * change is one atomic map operation, so callers on many threads neither
 * wait for each other nor see a half-made change; reads take no lock.
 * Maps are keyed with String's natural order (UTF-16 code units), which is
 * the order of every listing.
 */
public final class ISRAdapter {
    private static final String BTD_URI_PREFIX = "/apiv1/business/businesstransactions/";
    private static final String POLICY_URI_PREFIX = "/apiv1/policy/";
    private static final String SERVICE_URI_PREFIX = "/apiv1/services/";

    private static final ISRAdapter INSTANCE = new ISRAdapter();

    private record StoredBtd(String content, String uri) {
    }

    private record StoredPolicy(String document, String uri) {
    }

    private record StoredService(String namespace, String document, String uri) {
    }

    private final Map<String, StoredBtd> btds = new ConcurrentSkipListMap<>();
    // A type's map stays behind, empty, after its last policy goes: it
    // answers exactly as a type never used.
    private final Map<String, Map<String, StoredPolicy>> policiesByType = new ConcurrentSkipListMap<>();
    private final Map<String, StoredService> services = new ConcurrentSkipListMap<>();
    private volatile RepositoryDetails repositoryDetails;

    private ISRAdapter() {
    }

    public static ISRAdapter getInstance() {
        return INSTANCE;
    }

    // Business transaction definitions.

    public void createBTD(BTDDocument btd) throws LxRecoverableException {
        String name = required(required(btd, "btd").getName(), "name");
        String content = required(btd.getContent(), "content");
        String uri = BTD_URI_PREFIX + name;
        if (btds.putIfAbsent(name, new StoredBtd(content, uri)) != null) {
            throw RegistryMessages.btdExists(name);
        }
        btd.setUri(uri);
    }

    public void updateBTD(BTDDocument btd) throws LxRecoverableException {
        String name = required(required(btd, "btd").getName(), "name");
        String content = required(btd.getContent(), "content");
        StoredBtd updated = btds.computeIfPresent(name, (key, stored) -> new StoredBtd(content, stored.uri()));
        if (updated == null) {
            throw RegistryMessages.btdMissing(name);
        }
        btd.setUri(updated.uri());
    }

    public void getBTD(BTDDocument btd) throws LxRecoverableException {
        StoredBtd stored = existingBtd(required(required(btd, "btd").getName(), "name"));
        btd.setUri(stored.uri());
        btd.setContent(stored.content());
    }

    public void deleteBTD(String name) throws LxRecoverableException {
        if (btds.remove(required(name, "name")) == null) {
            throw RegistryMessages.btdMissing(name);
        }
    }

    public boolean btdExists(String name) throws LxRecoverableException {
        return btds.containsKey(required(name, "name"));
    }

    /** Copies with content, in name order. */
    public BTDDocument[] getBTDs() {
        return btds.entrySet().stream().map(entry -> {
            BTDDocument copy = new BTDDocument(entry.getKey(), entry.getValue().content());
            copy.setUri(entry.getValue().uri());
            return copy;
        }).toArray(BTDDocument[]::new);
    }

    private StoredBtd existingBtd(String name) throws LxRecoverableException {
        StoredBtd stored = btds.get(name);
        if (stored == null) {
            throw RegistryMessages.btdMissing(name);
        }
        return stored;
    }

    // Policies.

    /** Validates the document itself too, so that no caller can store one that validation would reject. */
    public void createPolicy(ISRPolicy policy) throws LxRecoverableException {
        String type = policyType(policy);
        String name = required(policy.getName(), "name");
        policy.validateContent();
        Map<String, StoredPolicy> ofType =
                policiesByType.computeIfAbsent(type, t -> new ConcurrentSkipListMap<>());
        String uri = POLICY_URI_PREFIX + type + "/" + name;
        if (ofType.putIfAbsent(name, new StoredPolicy(policy.getDocument(), uri)) != null) {
            throw RegistryMessages.policyExists(type, name);
        }
        policy.setUri(uri);
    }

    public void updatePolicy(ISRPolicy policy) throws LxRecoverableException {
        String type = policyType(policy);
        String name = required(policy.getName(), "name");
        policy.validateContent();
        String document = policy.getDocument();
        Map<String, StoredPolicy> ofType = policiesByType.get(type);
        StoredPolicy updated = ofType == null
                ? null
                : ofType.computeIfPresent(name, (key, stored) -> new StoredPolicy(document, stored.uri()));
        if (updated == null) {
            throw RegistryMessages.policyMissing(type, name);
        }
        policy.setUri(updated.uri());
    }

    public void getPolicy(ISRPolicy policy) throws LxRecoverableException {
        StoredPolicy stored = existingPolicy(policy);
        policy.setUri(stored.uri());
        policy.setDocument(stored.document());
    }

    public void deletePolicy(ISRPolicy policy) throws LxRecoverableException {
        String type = policyType(policy);
        String name = required(policy.getName(), "name");
        Map<String, StoredPolicy> ofType = policiesByType.get(type);
        if (ofType == null || ofType.remove(name) == null) {
            throw RegistryMessages.policyMissing(type, name);
        }
    }

    public boolean policyExists(ISRPolicy policy) throws LxRecoverableException {
        String type = policyType(policy);
        return policiesOf(type).containsKey(required(policy.getName(), "name"));
    }

    /** Copies with uri but without document (null), in name order. */
    public ISRPolicy[] getPoliciesWithoutDoc(String type) throws LxRecoverableException {
        required(type, "type");
        return policiesOf(type).entrySet().stream().map(entry -> {
            ISRPolicy copy = new ISRPolicy(type, entry.getKey(), null);
            copy.setUri(entry.getValue().uri());
            return copy;
        }).toArray(ISRPolicy[]::new);
    }

    /** The names of the type's policies in name order, separated by single spaces; empty for an unknown type. */
    public String getPolicyNames(String type) throws LxRecoverableException {
        return String.join(" ", policiesOf(required(type, "type")).keySet());
    }

    private static String policyType(ISRPolicy policy) throws LxRecoverableException {
        return required(required(policy, "policy").getType(), "type");
    }

    private Map<String, StoredPolicy> policiesOf(String type) {
        return policiesByType.getOrDefault(type, Map.of());
    }

    private StoredPolicy existingPolicy(ISRPolicy policy) throws LxRecoverableException {
        String type = policyType(policy);
        String name = required(policy.getName(), "name");
        StoredPolicy stored = policiesOf(type).get(name);
        if (stored == null) {
            throw RegistryMessages.policyMissing(type, name);
        }
        return stored;
    }

    // Services, keyed by name alone: getService and deleteService name no namespace.

    /** Replaces a service of the same name. */
    public void createService(ISRService service) throws LxRecoverableException {
        String name = required(required(service, "service").getName(), "name");
        String namespace = required(service.getNamespace(), "namespace");
        String document = required(service.getDocument(), "document");
        String uri = SERVICE_URI_PREFIX + namespace + "/" + name;
        services.put(name, new StoredService(namespace, document, uri));
        service.setUri(uri);
    }

    /** True when a service of that name exists in that namespace. */
    public boolean serviceExists(ISRService service) throws LxRecoverableException {
        String name = required(required(service, "service").getName(), "name");
        String namespace = required(service.getNamespace(), "namespace");
        StoredService stored = services.get(name);
        return stored != null && stored.namespace().equals(namespace);
    }

    /** A copy with document, or null when there is no service of that name. */
    public ISRService getService(String name) throws LxRecoverableException {
        StoredService stored = services.get(required(name, "name"));
        return stored == null ? null : copy(name, stored, stored.document());
    }

    public void deleteService(String name) throws LxRecoverableException {
        if (services.remove(required(name, "name")) == null) {
            throw RegistryMessages.serviceMissing(name);
        }
    }

    /** Copies with uri but without document (null), in name order. */
    public ISRService[] getServicesWithoutDoc() {
        return services.entrySet().stream()
                .map(entry -> copy(entry.getKey(), entry.getValue(), null))
                .toArray(ISRService[]::new);
    }

    private static ISRService copy(String name, StoredService stored, String document) {
        ISRService copy = new ISRService(name, stored.namespace(), document);
        copy.setUri(stored.uri());
        return copy;
    }

    // Administration.

    /** Only recorded: the reference registry has no repository behind it. */
    public void setRepositoryDetails(String text1, String text2, String text3, boolean flag,
            String text5, String text6, int number) {
        repositoryDetails = new RepositoryDetails(text1, text2, text3, flag, text5, text6, number);
    }

    /** The values of the last setRepositoryDetails call, or null when there was none since the last clear. */
    public RepositoryDetails repositoryDetails() {
        return repositoryDetails;
    }

    /**
     * Forgets everything the reference side holds or has recorded: policies,
     * BTDs, services, repository details, the migration count and the
     * stopped message flows.
     */
    public void clear() {
        btds.clear();
        policiesByType.clear();
        services.clear();
        repositoryDetails = null;
        ISRMigration.getInstance().reset();
        MessageFlowProxy.reset();
    }
}
