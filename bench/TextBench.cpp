// The text conversions both ways, beside the bare JNI calls they wrap.
#include "BenchSupport.hpp"
#include "PairBench.hpp"

#include <KorISRAdapterJniManager.hpp>
#include <KorJVM.hpp>
#include <KorWstringText.hpp>

#include <string>
#include <vector>

namespace {

using namespace bench;

// Args: the length in code units, and 1 for ASCII or 0 for Cyrillic, which
// the JVM cannot store compactly as Latin-1.
KorWstring sample(const benchmark::State& state) {
  const auto length = static_cast<std::size_t>(state.range(0));
  return KorWstringText::fromUtf16(std::u16string(length, state.range(1) != 0 ? u'a' : u'\u0416'));
}

void toJava(benchmark::State& state, bool bare) {
  JNIEnv* env = KorJVM::getEnvironment();
  const KorJniManager& manager = *KorISRAdapterJniManager::instance();
  const KorWstring text = sample(state);
  const auto* units = reinterpret_cast<const jchar*>(text.data());
  const auto length = static_cast<jsize>(text.length());
  for (auto _ : state) {
    jstring string = bare ? env->NewString(units, length) : manager.KorWstringTojavaString(env, text);
    env->DeleteLocalRef(string);
  }
}

void fromJava(benchmark::State& state, bool bare) {
  JNIEnv* env = KorJVM::getEnvironment();
  const KorJniManager& manager = *KorISRAdapterJniManager::instance();
  const KorWstring text = sample(state);
  auto string = static_cast<jstring>(env->NewGlobalRef(manager.KorWstringTojavaString(env, text)));
  std::vector<jchar> units(text.length());
  for (auto _ : state) {
    if (bare) {
      const jsize length = env->GetStringLength(string);
      env->GetStringRegion(string, 0, length, units.data());
      benchmark::DoNotOptimize(units.data());
    } else {
      benchmark::DoNotOptimize(manager.javaStringToKorWstringInternal(env, string));
    }
  }
  env->DeleteGlobalRef(string);
}

void withSamples(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"units", "ascii"})->ArgsProduct({{8, 64, 1024}, {1, 0}});
}

// One Java text of a sample and the units the bare floor reads it into.
struct JavaText {
  JNIEnv* env = KorJVM::getEnvironment();
  const KorJniManager& manager = *KorISRAdapterJniManager::instance();
  KorWstring text;
  jstring string = nullptr;
  std::vector<jchar> units;

  JavaText(std::size_t length, bool ascii)
      : text(KorWstringText::fromUtf16(std::u16string(length, ascii ? u'a' : u'\u0416'))),
        string(static_cast<jstring>(env->NewGlobalRef(manager.KorWstringTojavaString(env, text)))),
        units(length) {}
  ~JavaText() { env->DeleteGlobalRef(string); }
  JavaText(const JavaText&) = delete;
  JavaText& operator=(const JavaText&) = delete;
};

// fromJava beside the bare read into scratch and beside the owned floor (a
// fresh std::u16string filled by GetStringRegion); toJava beside NewString.
void registerTextPairs(std::size_t length, bool ascii) {
  const std::string sample = "/" + std::to_string(length) + (ascii ? "/ascii" : "/cyrillic");
  const auto sides = [length, ascii](int floor) {
    auto t = std::make_shared<JavaText>(length, ascii);
    const auto fromJava = [t] {
      benchmark::DoNotOptimize(t->manager.javaStringToKorWstringInternal(t->env, t->string));
    };
    const auto bare = [t] {
      t->env->GetStringRegion(t->string, 0, t->env->GetStringLength(t->string), t->units.data());
      benchmark::DoNotOptimize(t->units.data());
    };
    const auto owned = [t] {
      std::u16string units(static_cast<std::size_t>(t->env->GetStringLength(t->string)), u'\0');
      t->env->GetStringRegion(t->string, 0, static_cast<jsize>(units.size()),
                              reinterpret_cast<jchar*>(units.data()));
      benchmark::DoNotOptimize(units);
    };
    const auto toJava = [t] { t->env->DeleteLocalRef(t->manager.KorWstringTojavaString(t->env, t->text)); };
    const auto newString = [t] {
      t->env->DeleteLocalRef(t->env->NewString(reinterpret_cast<const jchar*>(t->text.data()),
                                               static_cast<jsize>(t->text.length())));
    };
    return floor == 0   ? PairSides{fromJava, owned, t}
           : floor == 1 ? PairSides{fromJava, bare, t}
                        : PairSides{toJava, newString, t};
  };
  registerPair("text/fromJava" + sample, 1.10, true, [sides] { return sides(0); });
  registerPair("bare/fromJava" + sample, 0, true, [sides] { return sides(1); });
  registerPair("bare/toJava" + sample, 0, true, [sides] { return sides(2); });
}

int registerTextBenchmarks() {
  for (bool bare : {false, true}) {
    const std::string side = bare ? "floor/" : "library/";
    withSamples(benchmark::RegisterBenchmark((side + "toJava").c_str(), toJava, bare));
    withSamples(benchmark::RegisterBenchmark((side + "fromJava").c_str(), fromJava, bare));
  }
  for (std::size_t length : {8, 64, 1024}) {
    registerTextPairs(length, true);
    registerTextPairs(length, false);
  }
  return 0;
}

[[maybe_unused]] const int registered = registerTextBenchmarks();

} // namespace
