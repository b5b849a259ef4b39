#pragma once

#include <cstdio>

namespace irmcore::app {

/// Keeps the program's results apart from the library's traces. The library prints on standard
/// output; while this object lives its lines go to standard error (`verbose`) or nowhere, and the
/// results, written to `stream()`, leave through the descriptor that standard output had.
/// Construct it before the camera and destroy it after.
class Results {
public:
    explicit Results(bool verbose);
    ~Results();
    Results(const Results&) = delete;
    Results& operator=(const Results&) = delete;

    /// Where results go; null when the descriptor could not be kept.
    std::FILE* stream() const { return m_stream; }

    /// Whether everything written so far has arrived.
    bool delivered() const;

private:
    int m_saved;
    std::FILE* m_stream;
};

} // namespace irmcore::app
