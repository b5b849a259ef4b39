#include "results.h"

#include <fcntl.h>
#include <unistd.h>

namespace irmcore::app {

namespace {

void sendTracesTo(int descriptor) {
    std::fflush(stdout);
    if (descriptor >= 0)
        ::dup2(descriptor, STDOUT_FILENO);
}

} // namespace

Results::Results(bool verbose)
    : m_saved(::dup(STDOUT_FILENO)), m_stream(m_saved < 0 ? nullptr : ::fdopen(m_saved, "w")) {
    if (verbose) {
        sendTracesTo(STDERR_FILENO);
    } else {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        sendTracesTo(nowhere);
        if (nowhere >= 0)
            ::close(nowhere);
    }
}

bool Results::delivered() const {
    return m_stream != nullptr && std::fflush(m_stream) == 0 && std::ferror(m_stream) == 0;
}

Results::~Results() {
    if (m_stream == nullptr)
        return;
    std::fflush(m_stream);
    sendTracesTo(m_saved);
    std::fclose(m_stream);
}

} // namespace irmcore::app
