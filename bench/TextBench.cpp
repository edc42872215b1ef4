// The text conversions both ways, beside the bare JNI calls they wrap.
#include "BenchSupport.hpp"

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

int registerTextBenchmarks() {
  for (bool bare : {false, true}) {
    const std::string side = bare ? "floor/" : "library/";
    withSamples(benchmark::RegisterBenchmark((side + "toJava").c_str(), toJava, bare));
    withSamples(benchmark::RegisterBenchmark((side + "fromJava").c_str(), fromJava, bare));
  }
  return 0;
}

[[maybe_unused]] const int registered = registerTextBenchmarks();

} // namespace
