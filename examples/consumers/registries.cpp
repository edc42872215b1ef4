// A host of legiorrug: one BTD in the in-memory registry, then one in the
// Java-backed registry, in a JVM that the host starts with the bundled jars
// (with the argument in-memory, the first only: that needs no JDK).
// Built by CMakeLists.txt (find_package) and by Makefile (pkg-config).
#include <KorCommonStartParameters.hpp>
#include <KorException.hpp>
#include <KorISRAdapter.hpp>
#include <KorJVMStartup.hpp>
#include <KorStartParametersSetup.hpp>
#include <KorWstringText.hpp>

#include <iostream>
#include <string>

namespace {

bool roundTrip(int containerKind) {
  KorStartParametersSetup::setContainerInfo(KorContainerInfo{containerKind});
  KorISRAdapter* registry = KorISRAdapter::isrAdapter(KorWstringText::fromUtf8("consumer"));
  KorWstring uri;
  registry->createBTD(KorWstringText::fromUtf8("Orders"), KorWstringText::fromUtf8("<btd/>"), uri);
  const bool found = registry->btdExists(KorWstringText::fromUtf8("Orders"));
  // The next isrAdapter call makes a new instance, of the kind then set.
  delete registry;
  return found;
}

} // namespace

int main(int argc, char** argv) {
  try {
    const bool inMemory = roundTrip(1);
    if (argc > 1 && std::string(argv[1]) == "in-memory") {
      std::cout << "in-memory: " << inMemory << '\n';
      return inMemory ? 0 : 1;
    }
    const std::string jars = LEGIORRUG_JAVA_DIR;
    KorJVMStartup::create(
        KorJVMOptions{{jars + "/legiorrug-plugin.jar", jars + "/legiorrug-registry.jar"}, {}});
    const bool javaBacked = roundTrip(0);
    std::cout << "in-memory: " << inMemory << ", Java-backed: " << javaBacked << '\n';
    return inMemory && javaBacked ? 0 : 1;
  } catch (const KorException& error) {
    std::cerr << "registries: " << error.what() << '\n';
    return 2;
  }
}
