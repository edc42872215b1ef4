// KorMutex is header-inline, so no library's exported interface shows it:
// this one exported function puts its layout and vtable before libabigail.
#include "KorMutex.hpp"

void korMutexLayout(KorMutex& /*mutex*/) {}
