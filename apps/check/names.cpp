#include "names.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace irmcore::app::check {

namespace {

/// Letters to insert, remove or replace to make one of the other.
int distance(const QString& a, const QString& b) {
    std::vector<int> row(static_cast<std::size_t>(b.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i + 1;
        for (int j = 0; j < b.size(); ++j) {
            int& cell = row[static_cast<std::size_t>(j) + 1];
            const int replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = cell;
            cell = std::min({replaced, cell + 1, row[static_cast<std::size_t>(j)] + 1});
        }
    }
    return row.back();
}

} // namespace

QString nearest(const QString& wrong, const QStringList& names) {
    const QString lower = wrong.toLower();
    QString best;
    int least = 3; // letters, that and more is another word
    for (const QString& name : names) {
        const QString other = name.toLower();
        int letters = distance(lower, other);
        const auto shorter = std::min(lower.size(), other.size());
        if (shorter >= 3 && lower.left(shorter) == other.left(shorter))
            letters = std::min(letters, 2); // Humidity for Humid
        const int most = other.size() <= 4 ? 1 : 2;
        if (letters <= most && letters < least) {
            least = letters;
            best = name;
        }
    }
    return best;
}

} // namespace irmcore::app::check
