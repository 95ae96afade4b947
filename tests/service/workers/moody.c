/* A test module that does what its properties say, and an alert module's calls besides. */
#include <fcntl.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

#include "quarl_module.h"

QUARL_DEFINE_MODULE(MOODY_KIND)

static const QuarlHost* host;

int16_t QuarlModuleStart(const QuarlHost* own) {
  host = own;
  return 0;
}

static int16_t Say(QuarlBuffer target, const char* text, int16_t result) {
  snprintf(target.text, target.size, "%s", text);
  return result;
}

static void Hang(void) {
  signal(SIGTERM, SIG_IGN);
  for (;;) pause();
}

/* Leaves a process behind that has a session of its own and ignores SIGTERM, and writes its number to a file. */
static void ForkAway(const char* file) {
  if (fork() != 0) return;
  setsid();
  if (fork() != 0) _exit(0);
  signal(SIGTERM, SIG_IGN);
  FILE* const out = fopen(file, "w");
  fprintf(out, "%d\n", (int)getpid());
  fclose(out);
  Hang();
}

static int16_t Act(const char* mood, QuarlBuffer text) {
  if (strcmp(mood, "crash") == 0) abort();
  if (strcmp(mood, "exit") == 0) _exit(7);
  if (strcmp(mood, "hang") == 0) Hang();
  if (strcmp(mood, "greedy") == 0) {
    for (size_t size = 1UL << 20;; size *= 2) {
      char* const memory = malloc(size);
      if (memory == NULL) return Say(text, "no more memory", QUARL_UNKNOWN);
      memset(memory, 1, size);
      if (size > 1UL << 31) return Say(text, "no limit", QUARL_FAILED);
    }
  }
  if (strncmp(mood, "fork ", 5) == 0) {
    ForkAway(mood + 5);
    Hang();
  }
  if (strncmp(mood, "leave ", 6) == 0) {
    ForkAway(mood + 6);
    return Say(text, "left one behind", QUARL_PASSED);
  }
  if (strncmp(mood, "sleep ", 6) == 0) usleep((useconds_t)atoi(mood + 6) * 1000);
  if (strncmp(mood, "linger ", 7) == 0) {
    close(open(mood + 7, O_WRONLY | O_CREAT, 0600));
    usleep(1500000);
  }
  if (strncmp(mood, "file ", 5) == 0) {
    FILE* const answer = fopen(mood + 5, "r");
    const int letter = answer == NULL ? EOF : fgetc(answer);
    if (answer != NULL) fclose(answer);
    return letter == 'p' ? Say(text, "well", QUARL_PASSED) : Say(text, "the file says no", QUARL_FAILED);
  }
  if (strcmp(mood, "chatter") == 0) {
    for (int line = 0; line < 20000; ++line) host->Log(2, "this again");
  }
  if (strcmp(mood, "print") == 0) {
    for (int line = 0; line < 1000; ++line) fprintf(stderr, "printed %d\n", line);
    fflush(stderr);
  }
  if (strcmp(mood, "fail") == 0) return Say(text, "it\tfails\n\x01really", QUARL_FAILED);
  if (strcmp(mood, "odd") == 0) return Say(text, "odd", 42);
  return Say(text, "well", QUARL_PASSED);
}

#if MOODY_KIND == QUARL_MODULE_TEST
int16_t QuarlCheck(const QuarlCheckRequest* request, QuarlCheckResult* result) {
  snprintf(result->performance.text, result->performance.size, "pid=%d", (int)getpid());
  result->duration = 5000;
  return Act(request->properties, result->text);
}
#else
int16_t QuarlAlertEvent(const QuarlEvent* event, const char* properties, QuarlBuffer resultText) {
  if (strncmp(properties, "append ", 7) == 0) {
    static const char* const kinds[] = {"test", "problem", "recovery"};
    char line[1024];
    const int length = snprintf(line, sizeof(line), "%s\t%s\t%s %s\n", event->problemId, event->messageId,
                                kinds[event->kind], event->subject);
    const int file = open(properties + 7, O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int16_t result = write(file, line, (size_t)length) == length ? 0 : 1;
    close(file);
    return result;
  }
  if (strcmp(properties, "refuse") == 0) return Say(resultText, event->subject, 1);
  return Act(properties, resultText) == QUARL_PASSED ? 0 : 1;
}
#endif
