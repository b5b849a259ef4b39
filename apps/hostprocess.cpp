#include "hostprocess.h"

#include "commands.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace irmcore::app {

namespace {

enum ShellCode : int { cannotExecute = 126, notFound = 127, signalled = 128 };

/// What a shell would run for this word, absolute; empty when there is nothing. `code` is how a
/// shell would end.
QByteArray programOf(const QByteArray& word, int& code) {
    QList<QByteArray> places{QByteArray()};
    if (!word.contains('/'))
        places = (qEnvironmentVariableIsSet("PATH") ? qgetenv("PATH") : "/bin:/usr/bin").split(':');
    code = notFound;
    for (const QByteArray& place : places) {
        const QByteArray path = word.contains('/') ? word
                                : place.isEmpty()  ? "./" + word
                                                   : place + '/' + word;
        struct stat status {};
        if (word.isEmpty() || ::stat(path.constData(), &status) != 0)
            continue;
        if (S_ISREG(status.st_mode) && ::access(path.constData(), X_OK) == 0)
            return path.startsWith('/') ? path
                                        : QFile::encodeName(QDir::currentPath()) + '/' + path;
        code = cannotExecute;
    }
    return {};
}

using Header = std::conditional_t<sizeof(void*) == 8, Elf64_Ehdr, Elf32_Ehdr>;
using Segment = std::conditional_t<sizeof(void*) == 8, Elf64_Phdr, Elf32_Phdr>;

/// The header of a program for a machine like this one; nothing for other bytes.
std::optional<Header> headerIn(const QByteArray& bytes) {
    constexpr char ownClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    Header header{};
    if (static_cast<std::size_t>(bytes.size()) < sizeof header || bytes[EI_CLASS] != ownClass)
        return std::nullopt;
    std::memcpy(&header, bytes.constData(), sizeof header);
    return header;
}

/// Whether a program is made for the machine that this one is made for.
bool isOurs(const Header& header) {
    QFile file(QCoreApplication::applicationFilePath());
    const auto own = file.open(QIODevice::ReadOnly) ? headerIn(file.read(sizeof(Header)))
                                                    : std::optional<Header>();
    return !own ||
           (own->e_machine == header.e_machine && own->e_ident[EI_DATA] == header.e_ident[EI_DATA]);
}

/// Why nothing can be preloaded into this program; empty when something can.
QString whyNot(const QByteArray& path, int depth = 0) {
    struct stat status {};
    const bool stranger =
        ::stat(path.constData(), &status) == 0 &&
        (((status.st_mode & S_ISUID) != 0 && status.st_uid != ::getuid()) ||
         ((status.st_mode & S_ISGID) != 0 && status.st_gid != ::getgid()) ||
         (::geteuid() != 0 && ::getxattr(path.constData(), "security.capability", nullptr, 0) > 0));
    if (stranger)
        return QStringLiteral("it runs with another user's rights");
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly))
        return {}; // may be executed without being read: the loader will see
    const QByteArray head = file.read(4096);
    if (head.startsWith("#!")) {
        const QByteArray line = head.mid(2, head.indexOf('\n') - 2).trimmed();
        const QByteArray interpreter = line.left(line.indexOf(' '));
        constexpr int most = 4;
        return depth < most && !interpreter.isEmpty() ? whyNot(interpreter, depth + 1) : QString();
    }
    if (!head.startsWith(ELFMAG))
        return {};
    const std::optional<Header> header = headerIn(head);
    if (!header || !isOurs(*header))
        return QStringLiteral("it is made for another machine");
    if (header->e_phentsize != sizeof(Segment) || !file.seek(static_cast<qint64>(header->e_phoff)))
        return {};
    for (int i = 0; i < header->e_phnum; ++i) {
        Segment segment{};
        const QByteArray bytes = file.read(sizeof segment);
        if (static_cast<std::size_t>(bytes.size()) < sizeof segment)
            break;
        std::memcpy(&segment, bytes.constData(), sizeof segment);
        if (segment.p_type == PT_INTERP)
            return {};
    }
    return QStringLiteral("it is statically linked");
}

std::vector<char*> pointers(std::vector<QByteArray>& words) {
    std::vector<char*> all;
    all.reserve(words.size() + 1);
    for (QByteArray& word : words)
        all.push_back(word.data());
    all.push_back(nullptr);
    return all;
}

/// The environment of the host; the last words have room for the courier's, if there is
/// one, and the plan's.
std::vector<QByteArray> environmentFor(const HostProcess& host) {
    QByteArray preload = host.preload;
    std::vector<QByteArray> all;
    for (char** word = environ; *word != nullptr; ++word) {
        const QByteArray text(*word);
        if (text.startsWith("LD_PRELOAD=")) {
            if (const QByteArray others = text.mid(11); !others.isEmpty())
                preload = others + ':' + preload;
        } else if (!text.startsWith(host.planName + '=') &&
                   (host.courier < 0 || !text.startsWith(host.courierName + '='))) {
            all.push_back(text);
        }
    }
    all.push_back("LD_PRELOAD=" + preload);
    if (host.courier >= 0)
        all.push_back(QByteArray(128, '\0'));
    all.push_back(QByteArray(128, '\0'));
    return all;
}

/// Waits for the host's end and meanwhile passes signals on to it.
int attend(pid_t host, const sigset_t& watched) {
    for (;;) {
        siginfo_t info{};
        const int number = ::sigwaitinfo(&watched, &info);
        // What comes from the terminal has reached the host as well.
        if (number > 0 && number != SIGCHLD && info.si_code <= 0)
            ::kill(host, number);
        int status = 0;
        if (number != SIGCHLD || ::waitpid(host, &status, WNOHANG) != host)
            continue;
        return WIFSIGNALED(status) ? signalled + WTERMSIG(status) : WEXITSTATUS(status);
    }
}

} // namespace

int inheritable(int descriptor) {
    constexpr int high = 200;
    const int copy = ::fcntl(descriptor, F_DUPFD, high);
    return copy >= 0 ? copy : ::dup(descriptor);
}

QByteArray preloadObject(QString& error) {
    QByteArray path = qgetenv("IRMCORE_SIM");
    if (!path.isEmpty()) // the host may work elsewhere
        path = QFile::encodeName(QFileInfo(QFile::decodeName(path)).absoluteFilePath());
    const QString beside = QCoreApplication::applicationDirPath();
    constexpr std::array places{"", IRMCORE_SIM_FROM_COMMAND};
    for (const char* place : places)
        if (const QString there =
                QDir::cleanPath(beside + QLatin1Char('/') + QString::fromLatin1(place) +
                                QStringLiteral("/libirmcore-sim.so"));
            path.isEmpty() && QFileInfo(there).isFile())
            path = QFile::encodeName(there);
    if (path.isEmpty())
        error = QStringLiteral("libirmcore-sim.so is neither beside the command nor in %1")
                    .arg(QDir::cleanPath(beside + QStringLiteral("/" IRMCORE_SIM_FROM_COMMAND)));
    else if (!QFileInfo(QFile::decodeName(path)).isFile() ||
             !QFileInfo(QFile::decodeName(path)).isReadable())
        error = QStringLiteral("%1 cannot be read").arg(QFile::decodeName(path));
    else if (path.contains(' ') || path.contains(':'))
        error = QStringLiteral("no object can be preloaded from a path with blanks or colons: %1")
                    .arg(QFile::decodeName(path));
    return error.isEmpty() ? path : QByteArray();
}

QByteArray hostProgram(const QByteArray& word, int& exitCode) {
    QByteArray program = programOf(word, exitCode);
    const QString name = QFile::decodeName(word);
    if (program.isEmpty()) {
        complain(exitCode == notFound ? QStringLiteral("there is no program '%1'").arg(name)
                                      : QStringLiteral("'%1' cannot be executed").arg(name));
        return {};
    }
    const QString why = whyNot(program);
    if (why.isEmpty())
        return program;
    complain(QStringLiteral("'%1' cannot be run here: %2").arg(name, why));
    exitCode = exitErrors;
    return {};
}

int runHost(const HostProcess& host) {
    // All that allocates comes before the fork.
    const QByteArray directory = QFile::encodeName(host.directory);
    std::vector<QByteArray> words = host.words;
    std::vector<QByteArray> environment = environmentFor(host);
    const std::vector<char*> arguments = pointers(words);
    const std::vector<char*> variables = pointers(environment);
    std::fflush(nullptr);

    sigset_t watched;
    sigset_t before;
    ::sigemptyset(&watched);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD})
        ::sigaddset(&watched, number);
    ::sigprocmask(SIG_BLOCK, &watched, &before);
    ::signal(SIGCHLD, SIG_DFL); // one that is ignored, by whoever started us, never comes
    const pid_t child = ::fork();
    if (child == 0) {
        ::sigprocmask(SIG_SETMASK, &before, nullptr);
        const auto handOver = [](QByteArray& word, const QByteArray& name, int descriptor) {
            std::snprintf(word.data(), static_cast<std::size_t>(word.size()), "%s=%ld:%d",
                          name.constData(), static_cast<long>(::getpid()), descriptor);
        };
        handOver(environment.back(), host.planName, host.plan);
        if (host.courier >= 0)
            handOver(environment[environment.size() - 2], host.courierName, host.courier);
        const bool there = directory.isEmpty() || ::chdir(directory.constData()) == 0;
        if (there)
            ::execve(host.program.constData(), arguments.data(), variables.data());
        const int error = errno;
        std::perror(there ? host.program.constData() : directory.constData());
        ::_exit(there && error == ENOENT ? notFound : cannotExecute);
    }
    if (child < 0)
        std::perror("irmcore: no process for the host");
    if (child > 0 && host.started)
        host.started();
    const int result = child < 0 ? exitErrors : attend(child, watched);
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    return result;
}

} // namespace irmcore::app
