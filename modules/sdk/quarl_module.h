#ifndef QUARL_MODULE_H
#define QUARL_MODULE_H

/* What every plug-in module includes. C99 and C++.
 *
 * A module is told by its file: version record, picture and folder (docs/writing-a-module.md). Besides, it exports the
 * two functions below, which say what it was built for. They take no arguments, have no effects and may be called from
 * any thread. */

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C, too */

/* The interface that a module offers. 0: identification only, the module has nothing to call. */
#define QUARL_MODULE_ABI 0

#define QUARL_MODULE_TEST 1
#define QUARL_MODULE_ALERT 2

#ifdef __cplusplus
#define QUARL_MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define QUARL_MODULE_EXPORT extern __attribute__((visibility("default")))
#endif

QUARL_MODULE_EXPORT int16_t QuarlModuleAbi(void);  /* QUARL_MODULE_ABI of the header it was built with */
QUARL_MODULE_EXPORT int16_t QuarlModuleKind(void); /* QUARL_MODULE_TEST or QUARL_MODULE_ALERT */

/* Defines both functions; stands once in a module, at file scope. */
#define QUARL_DEFINE_MODULE(kind) \
  int16_t QuarlModuleAbi(void) {  \
    return QUARL_MODULE_ABI;      \
  }                               \
  int16_t QuarlModuleKind(void) { \
    return (kind);                \
  }

#endif
