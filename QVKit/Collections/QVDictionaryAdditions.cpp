#include "QVKit/Collections/QVDictionaryAdditions.h"

// Every dictionary operation is a template over the dictionary type and lives
// in the header. This file compiles that header on its own with the library's
// flags (no casts from ASCII, no Qt keywords), so a consumer never meets an
// include-order or flag problem first.
