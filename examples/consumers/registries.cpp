// A host of legiorrug: one BTD in the in-memory registry, then one in the
// Java-backed registry, in a JVM that the host starts with the bundled jars.
// Built by CMakeLists.txt (find_package) and by Makefile (pkg-config).
#include <KorCommonStartParameters.hpp>
#include <KorException.hpp>
#include <KorISRAdapter.hpp>
#include <KorJVM.hpp>
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

int main() {
  try {
    const bool inMemory = roundTrip(1);
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
