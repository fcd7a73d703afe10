// Standard output pointed at /dev/null while an object lives. The provider
// traces every call on standard output; programs that drive it through the
// host (tests, benchmarks, soaks) keep their own output readable with this.
// The redirection is process-wide: one at a time.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace cmpihost {

class QuietStdout {
  public:
    QuietStdout() {
        std::fflush(stdout);
        saved_ = dup(STDOUT_FILENO);
        const int null_fd = open("/dev/null", O_WRONLY);
        dup2(null_fd, STDOUT_FILENO);
        close(null_fd);
    }
    ~QuietStdout() {
        std::fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
    }
    QuietStdout(const QuietStdout &) = delete;
    QuietStdout &operator=(const QuietStdout &) = delete;

    // The original standard output, open until the object goes.
    int original() const { return saved_; }

  private:
    int saved_;
};

}  // namespace cmpihost
