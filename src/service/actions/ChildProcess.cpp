#include "service/actions/ChildProcess.h"

#include "platform/DescriptorIo.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <utility>

namespace quorbel {

namespace {

struct Pipe {
    UniqueFd readEnd;
    UniqueFd writeEnd;
};

std::optional<Pipe> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    return Pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
}

std::string findProgram(const std::string &program) {
    if (program.find('/') != std::string::npos) {
        return program;
    }
    for (const std::string_view folder :
         {"/usr/local/sbin/", "/usr/local/bin/", "/usr/sbin/", "/usr/bin/", "/sbin/", "/bin/"}) {
        std::string path = std::string(folder) + program;
        if (::access(path.c_str(), X_OK) == 0) {
            return path;
        }
    }
    return program;
}

/// The texts' addresses, ended by a null, as exec wants them.
std::vector<char *> pointersTo(std::vector<std::string> &texts) {
    std::vector<char *> pointers(texts.size() + 1, nullptr);
    std::ranges::transform(texts, pointers.begin(), [](std::string &text) { return text.data(); });
    return pointers;
}

/// What the new process needs; all of it is made before the fork.
struct Start {
    std::string program;
    std::vector<char *> arguments;
    std::vector<char *> environment;
    int input = -1;
    int output = -1;
    int failure = -1;  ///< takes errno when the program cannot be run
};

void leaveService() {
    ::setsid();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
    for (const int number : {SIGPIPE, SIGXFSZ}) {
        ::signal(number, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    // Programs that use select() break with more.
    constexpr rlim_t kUsualFiles = 1024;
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = std::min(files.rlim_max, kUsualFiles);
        ::setrlimit(RLIMIT_NOFILE, &files);
    }
}

/// In the new process, where other threads' locks stay locked for ever: nothing may be allocated.
[[noreturn]] void become(const Start &start) {
    leaveService();
    ::dup2(start.input, STDIN_FILENO);
    ::dup2(start.output, STDOUT_FILENO);
    ::dup2(start.output, STDERR_FILENO);
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    if (::chdir("/") == 0) {
        ::execve(start.program.c_str(), start.arguments.data(), start.environment.data());
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(start.failure, &error, sizeof error);
    constexpr int kCannotRun = 127;
    ::_exit(kCannotRun);
}

/// The C library's own function cannot be called from C++ in this version.
int openHandle(pid_t id) {
    return static_cast<int>(::syscall(SYS_pidfd_open, id, 0));
}

/// The error that kept the program from running; 0 when it runs.
int readFailure(const UniqueFd &fd) {
    int error = 0;
    const ssize_t count = readSome(fd.get(), reinterpret_cast<char *>(&error), sizeof error);
    return count == static_cast<ssize_t>(sizeof error) ? error : 0;
}

}  // namespace

std::optional<ChildProcess> ChildProcess::start(const std::string &program,
                                                const std::vector<std::string> &arguments,
                                                const Environment &environment) {
    auto output = makePipe();
    auto failure = makePipe();
    const UniqueFd input(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (!output || !failure || !input.isOpen()) {
        return std::nullopt;
    }
    std::vector<std::string> ownArguments{program};
    ownArguments.insert(ownArguments.end(), arguments.begin(), arguments.end());
    Environment ownEnvironment = environment;
    const Start start{findProgram(program), pointersTo(ownArguments), pointersTo(ownEnvironment),
                      input.get(),          output->writeEnd.get(),   failure->writeEnd.get()};
    const pid_t id = ::fork();
    if (id == 0) {
        become(start);
    }
    if (id < 0) {
        return std::nullopt;
    }
    failure->writeEnd.reset();
    ChildProcess child{id, UniqueFd(openHandle(id)), std::move(output->readEnd)};
    int error = readFailure(failure->readEnd);
    if (error == 0 && !child.handle.isOpen()) {
        error = errno;
        child.signal(SIGKILL);
    }
    if (error != 0) {
        static_cast<void>(child.wait());
        errno = error;
        return std::nullopt;
    }
    ::fcntl(child.output.get(), F_SETFL, O_NONBLOCK);
    return child;
}

void ChildProcess::signal(int number) const {
    ::kill(-id, number);
}

bool ChildProcess::tryReap() const {
    return ::waitpid(id, nullptr, WNOHANG) != 0;
}

int ChildProcess::wait() const {
    int status = 0;
    while (::waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace quorbel
