#pragma once

namespace bench {

/// What a figure is shown in.
struct Unit {
    const char *name;
    double factor; ///< For a figure that is given in seconds, bytes or pieces.
    int decimals;
};

namespace units {

constexpr Unit milliseconds{"ms", 1e3, 1};
constexpr Unit fineMilliseconds{"ms", 1e3, 3};
constexpr Unit megabytes{"MB", 1e-6, 1};
constexpr Unit pages{"pages", 1, 0};
constexpr Unit calls{"calls", 1, 0};
constexpr Unit callsPerSecond{"/s", 1, 0};
constexpr Unit seconds{"s", 1, 2};

} // namespace units

} // namespace bench
