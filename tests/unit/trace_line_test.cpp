// A batch of trace lines writes the bytes printf would have written, in
// the same order, wherever its buffer happens to fill: inside a number, a
// text or a record field.
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "provider/trace_line.h"

namespace {

TEST(TraceLineTest, BatchWritesWhatPrintfWouldAcrossItsBufferEnds) {
    const long numbers[] = {0, 7, -42, 4094, LONG_MAX, LONG_MIN};
    const char field[12] = {'u', 'n', 't', 'e', 'r', 'm', 'i', 'n', 'a', 't', 'e', 'd'};
    std::string expected;
    testing::internal::CaptureStdout();
    {
        zone::TraceBatch batch;
        // Every line length from 1 to 60 bytes of text, so that the 8 KB
        // ends fall on every kind of piece many times.
        for (int round = 0; round < 3000; ++round) {
            const std::string text(static_cast<std::size_t>(round % 60 + 1), 't');
            const long number = numbers[round % 6];
            batch.text("found ").number(number).text(text).field(field).text("\n");
            expected += "found " + std::to_string(number) + text +
                        std::string(field, sizeof field) + "\n";
        }
    }
    const std::string written = testing::internal::GetCapturedStdout();
    ASSERT_GT(expected.size(), 4 * 8192U);
    EXPECT_EQ(expected, written);
}

}  // namespace
