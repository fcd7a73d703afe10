// A batch of trace lines writes the bytes printf would have written, in
// the same order, wherever its buffer happens to fill: inside a number, a
// text or a record field.
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "provider/trace_line.h"

namespace {

// What a piece of code writes on standard output.
template <typename Write>
std::string writtenBy(Write &&write) {
    std::fflush(stdout);
    std::FILE *capture = std::tmpfile();
    const int saved = dup(STDOUT_FILENO);
    dup2(fileno(capture), STDOUT_FILENO);
    write();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    std::string bytes;
    std::rewind(capture);
    for (int c = std::fgetc(capture); c != EOF; c = std::fgetc(capture))
        bytes.push_back(static_cast<char>(c));
    std::fclose(capture);
    return bytes;
}

TEST(TraceLineTest, BatchWritesWhatPrintfWouldAcrossItsBufferEnds) {
    const long numbers[] = {0, 7, -42, 4094, LONG_MAX, LONG_MIN};
    char field[12] = {'u', 'n', 't', 'e', 'r', 'm', 'i', 'n', 'a', 't', 'e', 'd'};
    // Every line length from 1 to 60 bytes of text, so that the 8 KB ends
    // fall on every kind of piece many times.
    std::string expected;
    for (int round = 0; round < 3000; ++round) {
        const std::string text(static_cast<std::size_t>(round % 60 + 1), 't');
        const long number = numbers[round % 6];
        expected += "found " + std::to_string(number) + text + std::string(field, sizeof field) +
                    "\n";
    }
    const std::string written = writtenBy([&] {
        zone::TraceBatch batch;
        for (int round = 0; round < 3000; ++round) {
            const std::string text(static_cast<std::size_t>(round % 60 + 1), 't');
            batch.text("found ").number(numbers[round % 6]).text(text).field(field).text("\n");
        }
    });
    ASSERT_GT(expected.size(), 4 * 8192U);
    EXPECT_EQ(expected, written);
}

}  // namespace
