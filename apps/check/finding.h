#pragma once

#include <QString>

#include <vector>

namespace irmcore::app::check {

enum class Severity {
    note,    ///< worth knowing, nothing is lost
    warning, ///< probably not what was meant
    error,   ///< a reading will be wrong
};

/// What is the matter with a file of the camera directory.
struct Finding {
    QString file; ///< below the camera directory
    int line;     ///< from 1 on; 0 for the file as a whole
    Severity severity;
    const char* code; ///< stable, listed in docs/check.md
    QString message;
    QString taken; ///< what the library takes instead; empty where that says nothing more
};

using Findings = std::vector<Finding>;

} // namespace irmcore::app::check
