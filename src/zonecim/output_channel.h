// Keeps zonecim's standard output for results alone.
//
// The provider and the simulated switch print their trace lines to standard
// output with printf. While an OutputChannel lives, file descriptor 1 is
// pointed at /dev/null (or, with tracing on, at standard error), and results
// go to a duplicate of the original standard output. stdio is flushed on
// before the switch so that no earlier line lands on the wrong side. Once
// diverted, descriptor 1 stays diverted for the rest of the process: the
// libraries may still print while they are unloaded or at exit.
#pragma once

#include <cstdio>
#include <string>

namespace zonecim {

class OutputChannel {
  public:
    // trace: true sends the traces to standard error instead of discarding them.
    explicit OutputChannel(bool trace);
    ~OutputChannel();
    OutputChannel(const OutputChannel &) = delete;
    OutputChannel &operator=(const OutputChannel &) = delete;

    // One result line, newline added.
    void line(const std::string &text);

  private:
    int saved_stdout_ = -1;
    std::FILE *results_ = nullptr;
};

}  // namespace zonecim
