#ifndef QUARL_MODULE_H
#define QUARL_MODULE_H

/* What every plug-in module includes. C99 and C++.
 *
 * A module is a shared library of one of two kinds: a test module checks a server, an alert module delivers a message.
 * It is loaded by a process of its own (quarl-modulehost), never by the console or the service, and is not unloaded
 * before that process ends. docs/writing-a-module.md tells the whole story.
 *
 * Texts are UTF-8. Text that comes back and is no UTF-8 is refused as a failed call.
 *
 * Threads: QuarlAbout and QuarlSetProperties are called on the process's main thread, one call a process. QuarlCheck,
 * QuarlAlert and QuarlAlertEvent may be called by many threads at once. A call must come back: the caller ends the
 * process when its time limit is over, with everything that the module started. */

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C, too */

/* The interface that a module offers. A module with another number is refused. */
#define QUARL_MODULE_ABI 1

#define QUARL_MODULE_TEST 1
#define QUARL_MODULE_ALERT 2

#ifdef __cplusplus
#define QUARL_MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define QUARL_MODULE_EXPORT extern __attribute__((visibility("default")))
#endif

/* NOLINTBEGIN(modernize-use-using, modernize-use-trailing-return-type): C, too */

/* A text that the callee may overwrite. size counts the bytes at text, with the NUL at the end; at least 1. Writing
 * past them ends the process. The caller reads back all size - 1 bytes, NULs among them included. */
typedef struct QuarlBuffer {
  char* text;
  uint32_t size;
} QuarlBuffer;

/* What a form calls while it is open. context is handed through. */
typedef struct QuarlFormCalls {
  uint32_t size; /* sizeof(QuarlFormCalls) */
  void* context;
  /* "Test now": tries the values, a JSON object, and writes one or more lines to report. 0: it went well. Called on a
   * thread of its own, the form stays usable meanwhile. It may still run when ShowForm has come back: what context
   * points to stays valid until the process ends. NULL: the form has no such button. */
  int16_t (*Try)(void* context, const char* values, QuarlBuffer report);
  /* Judges the values when the user confirms. 0: good; else the key of the field that is wrong stands in field and one
   * sentence for the user in report. NULL: what the fields' own limits say is enough. */
  int16_t (*Validate)(void* context, const char* values, QuarlBuffer field, QuarlBuffer report);
} QuarlFormCalls;

/* What the process offers to the module, alive until it ends. A member is there only if it lies inside size; a member
 * may be NULL where nothing can be shown (in the service). */
typedef struct QuarlHost {
  uint32_t size;
  /* Shows a dialog of fields over the console and waits for the user; main thread only. form describes the fields
   * (docs/forms.md); values is a JSON object with a member for each field, overwritten when the
   * user confirms. 0: confirmed; 1: cancelled; negative: could not be shown, or the values do not fit the buffer. */
  int16_t (*ShowForm)(const char* form, QuarlBuffer values, const QuarlFormCalls* calls);
  /* Shows a text with a title and an OK button; main thread only. 0: shown. */
  int16_t (*ShowText)(const char* title, const char* text);
  /* One line for the log: 1 information, 2 warning, 3 error. Any thread. */
  void (*Log)(int16_t severity, const char* line);
  /* For a module that shows windows of its own: 1 before the first one is shown, 0 when the last one has gone. Without
   * it the caller takes the module for one that does not answer. Main thread only. */
  void (*OwnWindows)(int16_t shown);
  /* The window over which such windows are to stand, an X11 window; 0: unknown. */
  uint64_t ownerWindow;
} QuarlHost;

/* States of a check. */
#define QUARL_PASSED 1
#define QUARL_UNKNOWN 2 /* the check could not be made */
#define QUARL_FAILED 3

typedef struct QuarlCheckRequest {
  uint32_t size; /* sizeof(QuarlCheckRequest) of the caller */
  const char* serverName;
  const char* serverAddress; /* dotted text */
  const char* properties;    /* ends at its first NUL */
  uint32_t timeLimit;        /* milliseconds after which the caller gives the call up */
} QuarlCheckRequest;

typedef struct QuarlCheckResult {
  uint32_t size;           /* sizeof(QuarlCheckResult) of the caller */
  QuarlBuffer text;        /* out: one line for people, ended by a NUL */
  QuarlBuffer performance; /* out: performance data in the Monitoring Plugins' form, or "" */
  int64_t duration;        /* out: microseconds that the check itself took; negative: not known */
} QuarlCheckResult;

/* Result of a step after which the check goes on. */
#define QUARL_WAITING 0

/* What comes to a check in steps that is given up, because its time limit is over or it waits for what cannot be waited
 * for: the module gives back all that it holds for the check. There is no further step, and the result is not read. */
#define QUARL_GIVE_UP 0x4000

/* What a check that is made in steps waits for. */
typedef struct QuarlCheckWait {
  uint32_t size;      /* sizeof(QuarlCheckWait) of the caller */
  void* state;        /* the module's own for this check; NULL in the first step */
  int32_t descriptor; /* out: what to wait for; stays open until the next step */
  int16_t events;     /* out: POLLIN, POLLOUT or both; in: what has come as poll() names it, 0 when the time is over,
                       * QUARL_GIVE_UP */
  uint32_t time;      /* out: milliseconds after which the next step is due in any case */
} QuarlCheckWait;

#define QUARL_EVENT_TEST 0 /* the user tries the alert */
#define QUARL_EVENT_PROBLEM 1
#define QUARL_EVENT_RECOVERY 2

/* The facts of an alert. Texts are never NULL; "" means unknown or none. */
typedef struct QuarlEvent {
  uint32_t size; /* sizeof(QuarlEvent) of the caller */
  int32_t kind;  /* QUARL_EVENT_... */
  const char* subject;
  const char* message; /* lines end in CR LF */
  const char* serverName;
  const char* serverAddress;
  const char* groupName;
  const char* testName;   /* "" when the server as a whole is meant */
  const char* resultText; /* the last check's line */
  int64_t time;           /* of the change, seconds since 1970-01-01 UTC */
  int64_t since;          /* beginning of the problem, the same unit; 0: unknown */
  const char* problemId;  /* the same for a problem and its recovery */
  const char* messageId;  /* this message's own, the same at each attempt to deliver it */
} QuarlEvent;

/* Every module. */
QUARL_MODULE_EXPORT int16_t QuarlModuleAbi(void);  /* QUARL_MODULE_ABI of the header it was built with */
QUARL_MODULE_EXPORT int16_t QuarlModuleKind(void); /* QUARL_MODULE_TEST or QUARL_MODULE_ALERT */
/* Called once after loading, before anything else but the two above; may be left out. 0: ready. */
QUARL_MODULE_EXPORT int16_t QuarlModuleStart(const QuarlHost* host);
/* Shows who made the module and comes back when the user has read it. The result is not examined. */
QUARL_MODULE_EXPORT int16_t QuarlAbout(void);
/* How many bytes the properties may take, 0 to 32767. */
QUARL_MODULE_EXPORT int16_t QuarlGetBufferSize(void);
/* Shows the dialog for the properties of one test or alert. The properties come padded with NULs to
 * QuarlGetBufferSize() bytes and are empty for a new record; a text that the module cannot read opens the dialog with
 * defaults and a note. For an alert of a group serverName is the group's name and serverAddress is "". 0: the user
 * confirmed and properties holds the new text; anything else: nothing to save. */
QUARL_MODULE_EXPORT int16_t QuarlSetProperties(QuarlBuffer serverName, QuarlBuffer serverAddress,
                                               QuarlBuffer properties);

/* Test modules: makes one check and gives its state, QUARL_PASSED, QUARL_UNKNOWN or QUARL_FAILED. Any other result
 * counts as QUARL_UNKNOWN. Shows nothing. */
QUARL_MODULE_EXPORT int16_t QuarlCheck(const QuarlCheckRequest* request, QuarlCheckResult* result);

/* Test modules; may be left out. Makes a check in steps, none of which waits for anything, so that thousands of checks
 * are on their way in one thread; where it is there, the service calls it instead of QuarlCheck. QUARL_WAITING: wait
 * says for what, and the next step comes with the same request and state. Any other result is that of QuarlCheck and
 * ends the check; result is written by that last step. All steps of a process are made on one thread, one after the
 * other; a step that takes five seconds ends the process. */
QUARL_MODULE_EXPORT int16_t QuarlCheckStep(const QuarlCheckRequest* request, QuarlCheckWait* wait,
                                           QuarlCheckResult* result);

/* Test modules that make checks in steps; may be left out. How many of them a process is to have on its way at once, 1
 * to 1000; without it, 1000. */
QUARL_MODULE_EXPORT int16_t QuarlChecksAtOnce(void);

/* Alert modules: delivers one message. 0: delivered; anything else: not, and resultText says why in one sentence.
 * Shows nothing. resultText comes filled with spaces. serverName and serverAddress as in QuarlSetProperties. */
QUARL_MODULE_EXPORT int16_t QuarlAlert(QuarlBuffer serverName, QuarlBuffer serverAddress, QuarlBuffer subject,
                                       QuarlBuffer message, QuarlBuffer properties, QuarlBuffer resultText);
/* The same with all facts of the event; may be left out, QuarlAlert is called then. */
QUARL_MODULE_EXPORT int16_t QuarlAlertEvent(const QuarlEvent* event, const char* properties, QuarlBuffer resultText);

/* NOLINTEND(modernize-use-using, modernize-use-trailing-return-type) */

/* Defines the two functions that say what the module is; stands once in a module, at file scope. */
#define QUARL_DEFINE_MODULE(kind) \
  int16_t QuarlModuleAbi(void) {  \
    return QUARL_MODULE_ABI;      \
  }                               \
  int16_t QuarlModuleKind(void) { \
    return (kind);                \
  }

#endif
