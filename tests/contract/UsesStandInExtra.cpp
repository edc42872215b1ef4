// Compiled as a source of the library is. It must not build: what the
// platform stand-in adds for hosts is out of the library's reach.
#include <KorWstringText.hpp>
