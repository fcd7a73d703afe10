// CIM datetime text <-> microseconds.
//
// Timestamps: "yyyymmddhhmmss.mmmmmm+ooo" (ooo: UTC offset in minutes) for
// microseconds since 1970-01-01 00:00 UTC; the host writes them in UTC.
// Intervals: "ddddddddhhmmss.mmmmmm:000".
#include <cstdio>

#include "host/objects.h"

namespace cmpihost::detail {

namespace {

constexpr CMPIUint64 kMicrosPerSecond = 1000000;
constexpr CMPIUint64 kSecondsPerDay = 86400;

// Days since 1970-01-01 of a proleptic Gregorian date, and the inverse.
long long daysFromCivil(long long y, unsigned m, unsigned d) {
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

void civilFromDays(long long z, long long *y, unsigned *m, unsigned *d) {
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    *d = doy - (153 * mp + 2) / 5 + 1;
    *m = mp < 10 ? mp + 3 : mp - 9;
    *y = static_cast<long long>(yoe) + era * 400 + (*m <= 2);
}

// Reads `count` decimal digits at `pos`; false if any is not a digit.
bool digits(std::string_view text, std::size_t pos, std::size_t count, CMPIUint64 *out) {
    CMPIUint64 value = 0;
    for (std::size_t i = pos; i < pos + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + static_cast<CMPIUint64>(text[i] - '0');
    }
    *out = value;
    return true;
}

struct Clock {
    CMPIUint64 hours, minutes, seconds, micros;
};

// "hhmmss.mmmmmm" at offset 8 of both forms.
bool readClock(std::string_view text, Clock *clock) {
    return digits(text, 8, 2, &clock->hours) && digits(text, 10, 2, &clock->minutes) &&
           digits(text, 12, 2, &clock->seconds) && text[14] == '.' &&
           digits(text, 15, 6, &clock->micros) && clock->minutes < 60 && clock->seconds < 60;
}

CMPIUint64 clockMicros(const Clock &clock) {
    return ((clock.hours * 60 + clock.minutes) * 60 + clock.seconds) * kMicrosPerSecond +
           clock.micros;
}

}  // namespace

std::string dateTimeText(CMPIUint64 micros, bool interval) {
    const CMPIUint64 fraction = micros % kMicrosPerSecond;
    CMPIUint64 seconds = micros / kMicrosPerSecond;
    const CMPIUint64 days = seconds / kSecondsPerDay;
    seconds %= kSecondsPerDay;
    const auto hh = static_cast<unsigned>(seconds / 3600);
    const auto mm = static_cast<unsigned>(seconds / 60 % 60);
    const auto ss = static_cast<unsigned>(seconds % 60);
    char buffer[64];
    if (interval) {
        std::snprintf(buffer, sizeof buffer, "%08llu%02u%02u%02u.%06llu:000",
                      static_cast<unsigned long long>(days % 100000000), hh, mm, ss,
                      static_cast<unsigned long long>(fraction));
    } else {
        long long year;
        unsigned month, day;
        civilFromDays(static_cast<long long>(days), &year, &month, &day);
        std::snprintf(buffer, sizeof buffer, "%04lld%02u%02u%02u%02u%02u.%06llu+000", year % 10000,
                      month, day, hh, mm, ss, static_cast<unsigned long long>(fraction));
    }
    return buffer;
}

bool parseDateTime(std::string_view text, CMPIUint64 *micros, bool *interval) {
    if (text.size() != 25) return false;
    Clock clock;
    if (!readClock(text, &clock)) return false;
    if (text[21] == ':') {
        CMPIUint64 days;
        if (!digits(text, 0, 8, &days) || text.substr(22) != "000" || clock.hours >= 24) {
            return false;
        }
        *interval = true;
        *micros = days * kSecondsPerDay * kMicrosPerSecond + clockMicros(clock);
        return true;
    }
    CMPIUint64 year, month, day, offset;
    if (text[21] != '+' && text[21] != '-') return false;
    if (!digits(text, 0, 4, &year) || !digits(text, 4, 2, &month) || !digits(text, 6, 2, &day) ||
        !digits(text, 22, 3, &offset)) {
        return false;
    }
    if (month < 1 || month > 12 || day < 1 || day > 31 || clock.hours >= 24 || year < 1970) {
        return false;
    }
    const long long days = daysFromCivil(static_cast<long long>(year), static_cast<unsigned>(month),
                                         static_cast<unsigned>(day));
    // Local time = UTC + offset, so UTC = local - offset.
    long long total = days * static_cast<long long>(kSecondsPerDay * kMicrosPerSecond) +
                      static_cast<long long>(clockMicros(clock));
    const long long shift = static_cast<long long>(offset) * 60 * kMicrosPerSecond;
    total += text[21] == '+' ? -shift : shift;
    if (total < 0) return false;
    *interval = false;
    *micros = static_cast<CMPIUint64>(total);
    return true;
}

}  // namespace cmpihost::detail
