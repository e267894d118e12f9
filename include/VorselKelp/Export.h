#pragma once

/// Marks what the libraries export. They are compiled with hidden visibility, so that nothing else of theirs
/// can be called, or clash with an application's names.
#if defined(__GNUC__)
#define VORSELKELP_API __attribute__((visibility("default")))
#else
#define VORSELKELP_API
#endif
