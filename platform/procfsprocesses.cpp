#include "platform/procfsprocesses.h"

#include "core/folders.h"

#include <QDir>
#include <QFile>

#include <climits>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

QByteArray ReadWholeFile(const QByteArray &path) {
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

// "python3.11", "perl5.36", "bash" and the like run the script named next.
bool IsInterpreter(const QByteArray &name) {
    static const char *const kInterpreters[] = {"python", "perl", "ruby", "sh", "bash",
                                                "dash",   "node", "lua",  "gjs"};
    for (const char *interpreter : kInterpreters) {
        const QByteArray prefix(interpreter);
        if (name == prefix)
            return true;
        // Versioned names: "python3", "python3.11", "perl5.36".
        if (name.startsWith(prefix) && name.size() > prefix.size() && name[prefix.size()] >= '0' &&
            name[prefix.size()] <= '9')
            return true;
    }
    return false;
}

void AddName(QList<QByteArray> *names, const QByteArray &path) {
    const QByteArray name = LastPathComponent(path);
    if (!name.isEmpty() && !names->contains(name))
        names->append(name);
}

} // namespace

QList<QByteArray> ProgramNames(const QByteArray &executable, const QList<QByteArray> &arguments) {
    QList<QByteArray> names;
    AddName(&names, executable);
    if (!arguments.isEmpty())
        AddName(&names, arguments.first());
    const bool interpreted =
        IsInterpreter(LastPathComponent(executable)) ||
        (!arguments.isEmpty() && IsInterpreter(LastPathComponent(arguments[0])));
    if (interpreted) {
        // The first argument that is not an option is the script.
        for (qsizetype i = 1; i < arguments.size(); ++i) {
            if (arguments[i].startsWith('-'))
                continue;
            AddName(&names, arguments[i]);
            break;
        }
    }
    return names;
}

ProcFsProcesses::ProcFsProcesses(QByteArray procRoot) : procRoot_(std::move(procRoot)) {}

std::optional<RunningProcess> ProcFsProcesses::process(std::int64_t pid) const {
    const QByteArray dir = JoinPath(procRoot_, QByteArray::number(pid));
    struct stat info;
    if (::stat(dir.constData(), &info) != 0)
        return std::nullopt;

    RunningProcess process;
    process.pid = pid;

    QByteArray executable(PATH_MAX, '\0');
    const QByteArray exeLink = JoinPath(dir, "exe");
    const ssize_t length = ::readlink(exeLink.constData(), executable.data(), executable.size());
    executable.resize(length > 0 ? length : 0);
    // A replaced executable reads as "/path (deleted)"; the name is still its own.
    if (executable.endsWith(" (deleted)"))
        executable.chop(10);

    QList<QByteArray> arguments = ReadWholeFile(JoinPath(dir, "cmdline")).split('\0');
    while (!arguments.isEmpty() && arguments.last().isEmpty())
        arguments.removeLast();
    process.programNames = ProgramNames(executable, arguments);

    // The state follows the parenthesised command name, which may itself hold ")".
    const QByteArray stat = ReadWholeFile(JoinPath(dir, "stat"));
    const qsizetype close = stat.lastIndexOf(')');
    const char state = close >= 0 && close + 2 < stat.size() ? stat[close + 2] : 'X';
    const bool live = state != 'Z' && state != 'X' && state != 'x';
    // Kernel threads have no executable and no arguments.
    const bool userProgram = !executable.isEmpty() || !arguments.isEmpty();
    process.isApplication = live && userProgram && info.st_uid == ::getuid();
    return process;
}

QList<RunningProcess> ProcFsProcesses::running() {
    QList<RunningProcess> processes;
    const QDir dir(QFile::decodeName(procRoot_));
    const QStringList entries = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QList<std::int64_t> pids;
    for (const QString &entry : entries) {
        bool isNumber = false;
        const std::int64_t pid = entry.toLongLong(&isNumber);
        if (isNumber && pid > 0)
            pids.append(pid);
    }
    // Oldest first, as the process list is walked.
    std::sort(pids.begin(), pids.end());
    for (const std::int64_t pid : pids) {
        if (auto process = this->process(pid))
            processes.append(*process);
    }
    return processes;
}

} // namespace platform
