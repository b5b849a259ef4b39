#pragma once

#include "../commands.h"
#include "../results.h"

namespace irmcore::app {

/// Has `work(stream)` print its results while the library's traces go elsewhere, see `Results`.
/// Returns its exit code, or that of results that did not arrive.
template <typename Work>
int deliver(bool verbose, Work work) {
    const Results results(verbose);
    if (results.stream() == nullptr) {
        complain(QStringLiteral("standard output cannot be kept"));
        return exitErrors;
    }
    const int exitCode = work(results.stream());
    if (!results.delivered()) {
        complain(QStringLiteral("the results could not be written"));
        return exitErrors;
    }
    return exitCode;
}

} // namespace irmcore::app
