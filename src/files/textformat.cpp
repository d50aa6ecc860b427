#include "files/textformat.h"

#include "core/timetext.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace textformat {

namespace detail {

const char digitPairs[201] = "00010203040506070809"
                             "10111213141516171819"
                             "20212223242526272829"
                             "30313233343536373839"
                             "40414243444546474849"
                             "50515253545556575859"
                             "60616263646566676869"
                             "70717273747576777879"
                             "80818283848586878889"
                             "90919293949596979899";

// Infinite, not a number, or so large that no fraction is left: the C
// formatter prints such values exactly.
int formatFixedSlow(float value, int decimals, char point, char *out) {
    char buf[maxFixedLength + 8];
    const int n = std::snprintf(buf, sizeof buf, "%.*f", decimals, double(value));
    const int len = n < 0 ? 0 : (n > maxFixedLength ? maxFixedLength : n);
    for (int i = 0; i < len; ++i)
        out[i] = buf[i] == '.' ? point : buf[i];
    return len;
}

void negativeYear(int year, char *out) {
    pad4(year, out); // the general rule: "000" in front, last four kept
}

} // namespace detail

int formatFixed(float value, int decimals, char point, char *out) {
    switch (decimals <= 0 ? 0 : (decimals >= 5 ? 5 : decimals)) {
    case 0:
        return formatFixed<0>(value, point, out);
    case 1:
        return formatFixed<1>(value, point, out);
    case 2:
        return formatFixed<2>(value, point, out);
    case 3:
        return formatFixed<3>(value, point, out);
    case 4:
        return formatFixed<4>(value, point, out);
    default:
        return formatFixed<5>(value, point, out);
    }
}

QByteArray formatFixed(float value, int decimals, char point) {
    char buf[maxFixedLength];
    const int n = formatFixed(value, decimals, point, buf);
    return QByteArray(buf, n);
}

} // namespace textformat
