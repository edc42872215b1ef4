#pragma once

#include <jni.h>

#include <climits>

// Counts the global references that native code makes and deletes through
// JNI, by replacing the two entries of the JVM's JNI function table.

// False when the JVM does not let its table be replaced.
bool countGlobalReferences(JavaVM* vm);

inline constexpr long noCount = LONG_MIN;

// Made minus deleted since counting started, on all threads; noCount when not counting.
long liveGlobalReferences();
