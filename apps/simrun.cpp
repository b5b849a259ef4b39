#include "simrun.h"

#include "../sim/cameradir.h"
#include "../sim/plan.h"
#include "../sim/wire.h"
#include "commands.h"
#include "hostprocess.h"
#include "simplan.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace irmcore::app {

namespace {

/// A descriptor with the plan's bytes, which a host inherits; negative on failure.
int descriptorOf(const std::string& bytes) {
    const int low = ::memfd_create("irmsim-plan", 0);
    if (low < 0)
        return -1;
    const int fd = inheritable(low);
    ::close(low);
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno != EINTR) {
            ::close(fd);
            return -1;
        }
        done += n > 0 ? static_cast<std::size_t>(n) : 0;
    }
    return fd;
}

bool isCameraDirectory() {
    return !QDir(QStringLiteral("etc"))
                .entryList({QStringLiteral("calc_len*")}, QDir::Files)
                .isEmpty();
}

/// Removes a directory, also what the host has made unwritable in it.
void removeAll(const QString& path) {
    namespace fs = std::filesystem;
    const fs::path directory = QFile::encodeName(path).toStdString();
    std::error_code error;
    fs::permissions(directory, fs::perms::owner_all, fs::perm_options::add, error);
    for (fs::recursive_directory_iterator entry(directory, error), end; entry != end && !error;
         entry.increment(error))
        if (entry->symlink_status(error).type() == fs::file_type::directory)
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, error);
    fs::remove_all(directory, error);
    if (error)
        complain(QStringLiteral("%1 is not removed: ").arg(path) +
                 QString::fromLocal8Bit(error.message().c_str()));
}

/// The host's words as they were given to this process: Qt has decoded them, which not every
/// byte survives.
std::vector<QByteArray> rawWords(const QStringList& words) {
    std::vector<QByteArray> raw;
    for (const QString& word : words)
        raw.push_back(word.toLocal8Bit());
    QFile file(QStringLiteral("/proc/self/cmdline"));
    if (!file.open(QIODevice::ReadOnly))
        return raw;
    const QList<QByteArray> all = file.readAll().split('\0'); // an empty one at the end
    const auto first = static_cast<std::size_t>(all.size()) - 1 - raw.size();
    if (static_cast<std::size_t>(all.size()) > raw.size() + 1)
        for (std::size_t i = 0; i < raw.size(); ++i)
            if (const QByteArray& word = all[static_cast<int>(first + i)];
                QString::fromLocal8Bit(word) == words[static_cast<int>(i)])
                raw[i] = word;
    return raw;
}

} // namespace

int runSimRun(const QStringList& words) {
    int exitCode = exitUsage;
    const std::optional<SimRun> run = parseSimRun(words, exitCode);
    return run ? runParsed(*run, {}) : exitCode;
}

int runParsed(const SimRun& run, const Watch& watch) {
    int exitCode = exitErrors;
    HostProcess host;
    host.courierName = irmsim::courierVariable;
    host.courier = watch.courier;
    host.started = watch.started;
    host.words = rawWords(run.host);
    host.program = hostProgram(host.words.front(), exitCode);
    if (host.program.isEmpty())
        return exitCode;
    host.planName = irmsim::planVariable;
    QString error;
    host.preload = preloadObject(error);
    if (host.preload.isEmpty()) {
        complain(error);
        return exitErrors;
    }
    host.directory = run.cameraDirectory;
    const auto prepared = [&] {
        return !watch.prepared ||
               watch.prepared(host.directory.isEmpty() ? QDir::currentPath() : host.directory);
    };
    if (watch.board)
        return prepared() ? runHost(host) : exitErrors;
    std::optional<QTemporaryDir> sample;
    if (host.directory.isEmpty() && !isCameraDirectory()) {
        // Qt's is the root or nothing when what TMPDIR names is not there.
        const QString place =
            QDir::tempPath().size() > 1 ? QDir::tempPath() : QStringLiteral("/tmp");
        sample.emplace(place + QStringLiteral("/irmcore-camera-XXXXXX"));
        sample->setAutoRemove(!run.keep);
        std::string why;
        if (!sample->isValid())
            error = sample->errorString();
        else if (!irmsim::writeCameraDirectory(sample->path().toLocal8Bit().toStdString(),
                                               {run.plan.surroundings, run.plan.range}, why))
            error = QString::fromLocal8Bit(why.c_str());
        if (!error.isEmpty()) {
            complain(QStringLiteral("no sample camera directory: ") + error);
            return exitErrors;
        }
        host.directory = sample->path();
        complain(QStringLiteral("the host's working directory is %1, a sample camera directory%2")
                     .arg(host.directory, run.keep ? QString() : QStringLiteral(" for this run")));
    }
    if (!prepared())
        return exitErrors;
    host.plan = descriptorOf(irmsim::writePlan(run.plan));
    if (host.plan < 0) {
        complain(QStringLiteral("no memory for the camera's plan: ") +
                 QString::fromLocal8Bit(std::strerror(errno)));
        return exitErrors;
    }
    if (run.verbose)
        complain(QStringLiteral("%1 on a simulated camera in %2, %3 events, by %4")
                     .arg(run.host.constFirst(),
                          host.directory.isEmpty() ? QDir::currentPath() : host.directory)
                     .arg(run.plan.events.size())
                     .arg(QFile::decodeName(host.preload)));
    exitCode = runHost(host);
    ::close(host.plan);
    if (sample && !run.keep) {
        sample->setAutoRemove(false);
        removeAll(sample->path());
    }
    return exitCode;
}

} // namespace irmcore::app
