#pragma once

#include <algorithm>
#include <vector>

namespace bench {

/// `values` are not empty.
inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// What 99 in 100 of the values do not exceed. `values` are not empty.
inline double percentile99(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[(values.size() * 99 + 99) / 100 - 1];
}

} // namespace bench
