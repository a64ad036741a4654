#include "QVKit/Collections/QVSetAdditions.h"

// Every set operation is a template over the element type and lives in the
// header. This file compiles that header on its own with the library's flags
// (no casts from ASCII, no Qt keywords), so a consumer never meets an
// include-order or flag problem first.
