#include "platform/CVekforTamu.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

#include "platform/PCString.h"

namespace {

std::atomic<CVekforTamu::Sink> gSink{nullptr};

// Asked every time, so that a program can switch the messages on and off while it runs. A program
// that changes its environment while others read it does so at its own risk.
bool WantsStandardError() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  const char* wish = std::getenv("YAX_DEBUG");
  return wish != nullptr && *wish != 0;
}

// One write a line: lines of several threads do not mix.
void WriteLine(int level, const VekMessage& message) {
  char line[VekMessage::kTextCapacity + VekMessage::kFileCapacity + 48];
  if (*message.File() != 0) {
    PCString::Print(line, sizeof line, "YAX[%d] %s:%d: %s\n", level, message.File(), message.Line(),
                    message.Text());
  } else {
    PCString::Print(line, sizeof line, "YAX[%d] %s\n", level, message.Text());
  }
  const unsigned int length = PCString::Length(line);
  while (write(STDERR_FILENO, line, length) < 0 && errno == EINTR) {
  }
}

}  // namespace

void CVekforTamu::Print(int level, VekMessage* message) {
  if (message == nullptr) return;
  const int error = errno;  // a message must not change what the caller looks at next
  const Sink sink = gSink.load(std::memory_order_acquire);
  if (sink != nullptr) {
    sink(level, message->Text());
  } else if (WantsStandardError()) {
    WriteLine(level, *message);
  }
  delete message;
  errno = error;
}

CVekforTamu::Sink CVekforTamu::SetSink(Sink sink) {
  return gSink.exchange(sink, std::memory_order_acq_rel);
}
