#ifndef QUARL_HELPER_H
#define QUARL_HELPER_H

/* The two helper libraries, TestHelper.dll and AlertHelper.dll, which stand in the application folder. Each operation
 * takes the path of a plug-in module, loads the module when this is its first call and hands the call on; a module
 * stays loaded until the process ends. The path is native, absolute and ends at its first NUL.
 *
 * Any thread may call, many at once. Results are the module's. A call that did not reach the module gives
 * QUARL_HELPER_FAILED, and HelperFailure() says why; a module may give that number too, so ask HelperFailure(). */

#include "quarl_module.h"

#define QUARL_HELPER_FAILED (-32768)

/* Both libraries. */

/* Before the first operation: what modules get in QuarlModuleStart(). Without it they get a host that can show
 * nothing. It must live until the process ends. */
QUARL_MODULE_EXPORT void HelperStart(const QuarlHost* host);
/* Why this thread's last operation did not reach its module, one sentence in UTF-8; "" when it did. Valid until the
 * thread's next operation. */
QUARL_MODULE_EXPORT const char* HelperFailure(void);

QUARL_MODULE_EXPORT int16_t About(QuarlBuffer modulePath);
QUARL_MODULE_EXPORT int16_t GetBufferSize(QuarlBuffer modulePath);
QUARL_MODULE_EXPORT int16_t SetProperties(QuarlBuffer modulePath, QuarlBuffer serverName, QuarlBuffer serverAddress,
                                          QuarlBuffer properties);

/* AlertHelper.dll. */
QUARL_MODULE_EXPORT int16_t Alert(QuarlBuffer modulePath, QuarlBuffer serverName, QuarlBuffer serverAddress,
                                  QuarlBuffer subject, QuarlBuffer message, QuarlBuffer properties,
                                  QuarlBuffer resultText);
/* With all facts of the event. A module without QuarlAlertEvent gets them as far as QuarlAlert takes them; its server
 * name is the group's name then when the event has no server. */
QUARL_MODULE_EXPORT int16_t AlertEvent(QuarlBuffer modulePath, const QuarlEvent* event, const char* properties,
                                       QuarlBuffer resultText);

/* TestHelper.dll. */
QUARL_MODULE_EXPORT int16_t Check(QuarlBuffer modulePath, const QuarlCheckRequest* request, QuarlCheckResult* result);
/* Checks in steps: how many of them at once when the module makes them, 0 when it does not, and what to call
 * CheckStep() with. */
QUARL_MODULE_EXPORT int16_t FindSteps(QuarlBuffer modulePath, const void** steps);
QUARL_MODULE_EXPORT int16_t CheckStep(const void* steps, const QuarlCheckRequest* request, QuarlCheckWait* wait,
                                      QuarlCheckResult* result);

#endif
