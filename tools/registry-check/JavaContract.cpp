// The Java classes and methods the library resolves, from the library's own
// table, each checked through the registry's class loader with the platform's
// own lookup, as the library resolves them; a member that does not resolve is shown beside what its class
// declares under that name.

#include "Requirements.hpp"

#include <KorJNI.hpp>
#include <KorJVM.hpp>
#include <KorJniRef.hpp>
#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorWstringText.hpp>

#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

struct JavaMethod {
  const char* name;
  const char* signature;
  bool isStatic = false;
};

struct JavaClass {
  const char* name;
  std::vector<JavaMethod> methods;
};

// The library's own rows, in its lookup order.
// clang-format off
#define KOR_JAVA_CLASS(slots, name) {name, {
#define KOR_JAVA_METHOD(slots, slot, isStatic, name, signature) {name, signature, (isStatic) != 0},
#define KOR_JAVA_END }},
const std::vector<JavaClass> contract = {
#include "KorJavaTable.def"
};
#undef KOR_JAVA_CLASS
#undef KOR_JAVA_METHOD
#undef KOR_JAVA_END
// clang-format on

// The lookup names the Java error it met only in a debug item.
class JavaErrorWatch : public KorLogSink {
public:
  void write(const KorLogRecord& record) override {
    if (record.inserts.size() == 2 && KorWstringText::toUtf8(record.inserts.front()) == "Java error") {
      error = shown(record.inserts.back());
    }
  }
  std::string error;
};

struct Lookup {
  jclass cls = nullptr; // a global reference, deleted by the caller
  std::string javaError;
  bool found = false;
};

Lookup lookUp(JNIEnv* env, const char* className, const JavaMethod* method) {
  Lookup lookup;
  jmethodID id = nullptr;
  const KorJNI::MethodInfo methods[] = {{&id, method != nullptr && method->isStatic ? 1 : 0,
                                         method != nullptr ? method->name : nullptr,
                                         method != nullptr ? method->signature : nullptr},
                                        {}};
  const KorJNI::ClassInfo table[] = {
      {&lookup.cls, className, method != nullptr ? methods : nullptr, nullptr, nullptr, nullptr}, {}};
  auto watch = std::make_shared<JavaErrorWatch>();
  std::shared_ptr<KorLogSink> sink = KorLogSink::install(watch);
  const int level = KorLog::iEffectiveLogFilter;
  KorLog::iEffectiveLogFilter = 4;
  try {
    KorJNI::findClassesAndMethodsUsingISRClassLoader(table, env);
    lookup.found = true;
  } catch (const KorJNI::Failure&) {
    lookup.javaError = watch->error;
  }
  KorLog::iEffectiveLogFilter = level;
  KorLogSink::install(sink);
  return lookup;
}

// Thrown, with the Java exception cleared, when a reflective call fails.
struct ReflectionFailed {};

template <typename T> T checked(JNIEnv* env, T value) {
  if (env->ExceptionCheck()) {
    env->ExceptionClear();
    throw ReflectionFailed{};
  }
  if constexpr (std::is_pointer_v<T>) {
    if (value == nullptr) {
      throw ReflectionFailed{};
    }
  }
  return value;
}

jmethodID methodOf(JNIEnv* env, jobject target, const char* name, const char* signature) {
  KorJniLocalRef<jclass> cls(env, checked(env, env->GetObjectClass(target)));
  return checked(env, env->GetMethodID(cls.get(), name, signature));
}

template <typename T = jobject>
T callObject(JNIEnv* env, jobject target, const char* name, const char* signature) {
  return static_cast<T>(checked(env, env->CallObjectMethod(target, methodOf(env, target, name, signature))));
}

std::string javaText(JNIEnv* env, jstring text) {
  const char* chars = checked(env, env->GetStringUTFChars(text, nullptr));
  std::string copy = chars;
  env->ReleaseStringUTFChars(text, chars);
  return copy;
}

std::string descriptorOf(JNIEnv* env, jobject type) {
  KorJniLocalRef<jstring> text(env,
                               callObject<jstring>(env, type, "descriptorString", "()Ljava/lang/String;"));
  return javaText(env, text.get());
}

// "descriptor" of one java.lang.reflect.Method or Constructor, " (static)" after a static one.
std::string describeMember(JNIEnv* env, jobject member, bool constructor) {
  KorJniLocalRef<jobjectArray> parameters(
      env, callObject<jobjectArray>(env, member, "getParameterTypes", "()[Ljava/lang/Class;"));
  std::string descriptor = "(";
  for (jsize i = 0; i < env->GetArrayLength(parameters.get()); ++i) {
    KorJniLocalRef<> parameter(env, checked(env, env->GetObjectArrayElement(parameters.get(), i)));
    descriptor += descriptorOf(env, parameter.get());
  }
  descriptor += ")";
  if (constructor) {
    return descriptor + "V";
  }
  KorJniLocalRef<> result(env, callObject(env, member, "getReturnType", "()Ljava/lang/Class;"));
  const jint modifiers =
      checked(env, env->CallIntMethod(member, methodOf(env, member, "getModifiers", "()I")));
  const jint staticModifier = 8;
  return descriptor + descriptorOf(env, result.get()) +
         ((modifiers & staticModifier) != 0 ? " (static)" : "");
}

std::string listDeclared(JNIEnv* env, jclass cls, const JavaMethod& wanted) {
  const bool constructor = std::string(wanted.name) == "<init>";
  KorJniLocalRef<jobjectArray> members(
      env, callObject<jobjectArray>(env, cls, constructor ? "getDeclaredConstructors" : "getDeclaredMethods",
                                    constructor ? "()[Ljava/lang/reflect/Constructor;"
                                                : "()[Ljava/lang/reflect/Method;"));
  std::string found;
  for (jsize i = 0; i < env->GetArrayLength(members.get()); ++i) {
    KorJniLocalRef<> member(env, checked(env, env->GetObjectArrayElement(members.get(), i)));
    KorJniLocalRef<jstring> name(env,
                                 callObject<jstring>(env, member.get(), "getName", "()Ljava/lang/String;"));
    if (constructor || javaText(env, name.get()) == wanted.name) {
      found += (found.empty() ? "" : ", ") + std::string(wanted.name) + " " +
               describeMember(env, member.get(), constructor);
    }
  }
  return found.empty() ? std::string("it declares no ") + (constructor ? "constructor" : "method named ") +
                             (constructor ? "" : wanted.name)
                       : "it declares " + found;
}

// What the class declares under the member's name, for the report.
std::string declared(JNIEnv* env, jclass cls, const JavaMethod& wanted) {
  if (env->PushLocalFrame(16) != JNI_OK) {
    env->ExceptionClear();
    return "its members could not be listed";
  }
  std::string text;
  try {
    text = listDeclared(env, cls, wanted);
  } catch (const ReflectionFailed&) {
    text = "its members could not be listed";
  }
  env->PopLocalFrame(nullptr);
  return text;
}

std::string shortName(const char* className) {
  std::string name = className;
  return name.substr(name.rfind('/') + 1);
}

std::string kind(const JavaMethod& method) {
  return std::string(method.name) == "<init>" ? "a constructor"
         : method.isStatic                    ? "a static method"
                                              : "an instance method";
}

// The jar or folder a class came from, so that an author sees which of their entries answered.
std::string origin(JNIEnv* env, jclass cls) {
  if (env->PushLocalFrame(8) != JNI_OK) {
    env->ExceptionClear();
    return "an unknown place";
  }
  std::string where = "the JVM's own classes";
  try {
    jobject domain = callObject(env, cls, "getProtectionDomain", "()Ljava/security/ProtectionDomain;");
    jobject source =
        env->CallObjectMethod(domain, methodOf(env, domain, "getCodeSource", "()Ljava/security/CodeSource;"));
    checked(env, 0);
    if (source != nullptr) {
      jobject location = callObject(env, source, "getLocation", "()Ljava/net/URL;");
      where = javaText(env, callObject<jstring>(env, location, "getPath", "()Ljava/lang/String;"));
    }
  } catch (const ReflectionFailed&) {
    where = "an unknown place";
  }
  env->PopLocalFrame(nullptr);
  return where;
}

void checkClass(Probe& p, const JavaClass& javaClass) {
  JNIEnv* env = KorJVM::getEnvironment();
  Lookup lookup = lookUp(env, javaClass.name, nullptr);
  if (lookup.cls != nullptr) {
    p.evidence.push_back({Verdict::pass, std::string("loadClass(\"") + javaClass.name + "\")",
                          "loaded from " + origin(env, lookup.cls),
                          "the class, from the registry's jar or folder"});
    env->DeleteGlobalRef(lookup.cls);
  }
  if (!lookup.found) {
    throw Evidence{Verdict::fail, std::string("loadClass(\"") + javaClass.name + "\")",
                   lookup.javaError.empty() ? "not found" : lookup.javaError,
                   "the class, found by the class loader the registry's classes come from"};
  }
}

void checkMethod(const JavaClass& javaClass, const JavaMethod& method) {
  JNIEnv* env = KorJVM::getEnvironment();
  Lookup lookup = lookUp(env, javaClass.name, &method);
  std::string got;
  if (!lookup.found && lookup.cls != nullptr) {
    got = declared(env, lookup.cls, method);
  }
  if (lookup.cls != nullptr) {
    env->DeleteGlobalRef(lookup.cls);
  }
  if (!lookup.found) {
    throw Evidence{Verdict::fail,
                   std::string(method.isStatic ? "GetStaticMethodID" : "GetMethodID") + "(" + javaClass.name +
                       ", \"" + method.name + "\", \"" + method.signature + "\")",
                   got, kind(method) + " " + method.name + " " + method.signature};
  }
}

// getInstance twice here and once on another thread: a host that deletes and
// re-creates its adapter, or calls from a new thread, must meet the same data.
void sameInstance(Probe& /*probe*/) {
  const JavaClass& adapter = contract.front();
  const JavaMethod& getInstance = adapter.methods.front();
  JNIEnv* env = KorJVM::getEnvironment();
  Lookup lookup = lookUp(env, adapter.name, &getInstance);
  struct Drop {
    JNIEnv* env;
    jclass cls;
    ~Drop() { env->DeleteGlobalRef(cls); }
  } drop{env, lookup.cls};
  std::string got;
  try {
    jmethodID id = checked(env, env->GetStaticMethodID(drop.cls, getInstance.name, getInstance.signature));
    KorJniLocalRef<> first(env, checked(env, env->CallStaticObjectMethod(drop.cls, id)));
    KorJniLocalRef<> second(env, checked(env, env->CallStaticObjectMethod(drop.cls, id)));
    got = env->IsSameObject(first.get(), second.get()) ? "" : "a new object on the second call";
    std::thread([&] {
      JNIEnv* other = KorJVM::getEnvironment();
      KorJniLocalRef<> third(other, other->CallStaticObjectMethod(drop.cls, id));
      other->ExceptionClear();
      got += other->IsSameObject(first.get(), third.get()) ? "" : " a new object on another thread";
    }).join();
  } catch (const ReflectionFailed&) {
    got = "an exception or null";
  }
  if (!got.empty()) {
    throw Evidence{
        Verdict::fail, "ISRAdapter.getInstance()", got,
        "the same adapter on every call and every thread: the library keeps the one it gets first, "
        "and a host that re-creates its adapter or calls from another thread must see the same "
        "registry"};
  }
}

} // namespace

std::vector<Requirement> resolutionRequirements() {
  std::vector<Requirement> rows;
  for (const JavaClass& javaClass : contract) {
    const std::string classId = std::string("class ") + javaClass.name;
    rows.push_back({classId,
                    "resolution",
                    "class " + std::string(javaClass.name) + " loads",
                    {},
                    false,
                    [&javaClass](Probe& p) { checkClass(p, javaClass); }});
    for (const JavaMethod& method : javaClass.methods) {
      rows.push_back({classId + "." + method.name + method.signature,
                      "resolution",
                      shortName(javaClass.name) + "." + method.name + " " + method.signature +
                          " resolves as " + kind(method),
                      {classId},
                      false,
                      [&javaClass, &method](Probe&) { checkMethod(javaClass, method); }});
    }
  }
  rows.push_back({"one instance",
                  "answers",
                  "ISRAdapter.getInstance answers the same object on every call and every thread",
                  {rows.front().id + ".getInstance" + contract.front().methods.front().signature},
                  false,
                  sameInstance});
  return rows;
}
