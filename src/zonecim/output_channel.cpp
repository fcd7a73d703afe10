#include "zonecim/output_channel.h"

#include <fcntl.h>
#include <unistd.h>

#include <stdexcept>

namespace zonecim {

OutputChannel::OutputChannel(bool trace) {
    std::fflush(stdout);
    saved_stdout_ = ::dup(STDOUT_FILENO);
    if (saved_stdout_ < 0) throw std::runtime_error("can't duplicate standard output");
    results_ = ::fdopen(saved_stdout_, "w");
    if (results_ == nullptr) {
        ::close(saved_stdout_);
        throw std::runtime_error("can't open the result stream");
    }
    const int sink = trace ? STDERR_FILENO : ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (sink < 0 || ::dup2(sink, STDOUT_FILENO) < 0) {
        if (sink >= 0 && !trace) ::close(sink);
        std::fclose(results_);
        throw std::runtime_error("can't divert standard output");
    }
    if (!trace) ::close(sink);
}

OutputChannel::~OutputChannel() {
    // Standard output stays diverted: whatever the libraries print while
    // they are unloaded or at exit is a trace too.
    std::fflush(stdout);
    std::fclose(results_);
}

void OutputChannel::line(const std::string &text) {
    std::fputs(text.c_str(), results_);
    std::fputc('\n', results_);
    std::fflush(results_);
}

}  // namespace zonecim
