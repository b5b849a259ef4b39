#pragma once

#include <vector>

/// Pure: values in, values out.
namespace irmcore::app::check {

/// A value that does not lie where its neighbours say.
struct Outlier {
    int index;
    double by; ///< how much it is above
};

/// The values of a smooth curve at equal steps that are off it by more than `share` of the step
/// from value to value there, the worst first, at most `most`. Fewer than six values tell nothing.
///
/// A single wrong value stands in the fourth differences as 1, -4, 6, -4, 1 times its error; in
/// those of a smooth curve is next to nothing. The value whose pattern explains most of them is
/// taken for wrong and put right, and so on.
std::vector<Outlier> offCurve(std::vector<double> values, double share, int most);

/// The straight line y = offset + slope x through points, by least squares. Slope 0 where all x are
/// one.
struct Line {
    double offset;
    double slope;
};
Line fitLine(const std::vector<double>& x, const std::vector<double>& y);

} // namespace irmcore::app::check
