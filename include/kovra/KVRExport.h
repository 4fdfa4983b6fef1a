#pragma once

/// Marks what libkovra.so exports. The shared library is built with hidden
/// visibility, so a class or function without it stays internal; the static
/// library ignores the difference.
#if defined(__GNUC__) || defined(__clang__)
#define KOVRA_API __attribute__((visibility("default")))
#else
#define KOVRA_API
#endif
