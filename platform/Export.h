#pragma once

/// Marks what the shared library exports; everything else is hidden.
#if defined(HWDEF_STATIC)
#define HWDEF_API
#else
#define HWDEF_API __attribute__((visibility("default")))
#endif

/// Hides again what belongs to an exported class and is nobody's interface.
#define HWDEF_LOCAL __attribute__((visibility("hidden")))
