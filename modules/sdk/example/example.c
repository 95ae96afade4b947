/* A test module in plain C: does a server accept connections on a TCP port?
 *
 * It keeps one setting, the port, as the properties {"port":80}. The process that loads the module shows its dialog:
 * the module only describes the fields. */
#define _POSIX_C_SOURCE 200809L

#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include "quarl_module.h"

enum { kStandardPort = 80, kPropertiesSize = 64, kTryLimit = 5000 };

/* Tells what the module is; the loader looks at it before it calls anything else. */
QUARL_DEFINE_MODULE(QUARL_MODULE_TEST)

/* Offers dialogs and the log, and lives as long as the process. */
static const QuarlHost* host;

int16_t QuarlModuleStart(const QuarlHost* given) {
  host = given;
  return 0;
}

/* A member of the host is there only if it lies inside the size that the host states. */
#define HOST_HAS(member) \
  (host != NULL && host->size >= offsetof(QuarlHost, member) + sizeof host->member && host->member != NULL)

int16_t QuarlAbout(void) {
  return HOST_HAS(ShowText) ? host->ShowText("Example", "Example 1.2.3\n\nConnects to a TCP port.") : -1;
}

int16_t QuarlGetBufferSize(void) {
  return kPropertiesSize;
}

/* The port out of properties or values, 0 when there is none that can be used. A single number needs no JSON library;
 * anything that is not understood counts as missing and is never an error. */
static int PortOf(const char* text) {
  static const char kKey[] = "\"port\":";
  const char* const found = strstr(text, kKey);
  const long port = found != NULL ? strtol(found + sizeof kKey - 1, NULL, 10) : 0;
  return port >= 1 && port <= 65535 ? (int)port : 0;
}

static long long Microseconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

/* Connects and gives errno's value, 0 for a connection. Many threads may be in here, so nothing is shared. */
static int Connect(const char* address, int port, int timeLimit) {
  struct sockaddr_in peer = {.sin_family = AF_INET, .sin_port = htons((uint16_t)port)};
  if (inet_pton(AF_INET, address, &peer.sin_addr) != 1) return EAFNOSUPPORT;
  const int s = socket(AF_INET, SOCK_STREAM, 0);
  if (s < 0) return errno;
  fcntl(s, F_SETFD, FD_CLOEXEC);
  fcntl(s, F_SETFL, O_NONBLOCK);
  int error = connect(s, (const struct sockaddr*)&peer, sizeof peer) == 0 ? 0 : errno;
  if (error == EINPROGRESS) {
    struct pollfd wanted = {.fd = s, .events = POLLOUT};
    socklen_t size = sizeof error;
    const int ready = poll(&wanted, 1, timeLimit);
    error = ready > 0 ? 0 : (ready == 0 ? ETIMEDOUT : errno);
    if (ready > 0) getsockopt(s, SOL_SOCKET, SO_ERROR, &error, &size);
  }
  close(s);
  return error;
}

/* Writes a line into a buffer, cut where the buffer ends. */
static void Tell(QuarlBuffer line, int port, int error) {
  if (error == 0) {
    snprintf(line.text, line.size, "Port %d accepts connections", port);
  } else {
    snprintf(line.text, line.size, "Port %d: %s", port, strerror(error));
  }
}

int16_t QuarlCheck(const QuarlCheckRequest* request, QuarlCheckResult* result) {
  const int port = PortOf(request->properties);
  if (port == 0) {
    snprintf(result->text.text, result->text.size, "No port is set");
    return QUARL_UNKNOWN;
  }
  /* Stay below the limit: a check that is still under way then is given up, with everything it knows. */
  const int timeLimit = request->timeLimit > 200 && request->timeLimit < 3600000 ? (int)request->timeLimit - 100 : 100;
  const long long before = Microseconds();
  const int error = Connect(request->serverAddress, port, timeLimit);
  result->duration = Microseconds() - before;
  Tell(result->text, port, error);
  snprintf(result->performance.text, result->performance.size, "time=%.6fs", (double)result->duration / 1e6);
  if (error == EAFNOSUPPORT) return QUARL_UNKNOWN;
  return error == 0 ? QUARL_PASSED : QUARL_FAILED;
}

/* "Test now" of the dialog: the check with the values on the screen. */
static int16_t Try(void* context, const char* values, QuarlBuffer report) {
  const int port = PortOf(values);
  const int error = Connect(context, port, kTryLimit);
  Tell(report, port, error);
  return error == 0 ? 0 : 1;
}

int16_t QuarlSetProperties(QuarlBuffer serverName, QuarlBuffer serverAddress, QuarlBuffer properties) {
  static const char kForm[] =
      "{\"title\":\"Example\",%s\"tryLabel\":\"Test now\",\"fields\":[{\"key\":\"port\",\"label\":\"Port\","
      "\"type\":\"integer\",\"minimum\":1,\"maximum\":65535,\"help\":\"The TCP port to connect to.\"}]}";
  const int known = PortOf(properties.text);
  const int isNew = properties.text[0] == '\0';
  const QuarlFormCalls calls = {sizeof calls, serverAddress.text, Try, NULL};
  char form[sizeof kForm + 100];
  char values[kPropertiesSize + 1];
  (void)serverName;
  if (!HOST_HAS(ShowForm)) return -1;
  snprintf(form, sizeof form, kForm, isNew || known != 0 ? "" : "\"note\":\"The settings could not be read.\",");
  snprintf(values, sizeof values, "{\"port\":%d}", known != 0 ? known : kStandardPort);
  const int16_t result = host->ShowForm(form, (QuarlBuffer){values, sizeof values}, &calls);
  if (result != 0) return result;
  const int size = snprintf(NULL, 0, "{\"port\":%d}", PortOf(values));
  if (size < 0 || (uint32_t)size >= properties.size) return -1;
  /* All bytes of the buffer go back, so what stood behind the text has to go. */
  memset(properties.text, 0, properties.size);
  snprintf(properties.text, properties.size, "{\"port\":%d}", PortOf(values));
  return 0;
}
