// Runs a program under a fault the store must survive: a file-size limit (writes past it fail as
// on a full disk) and, when started as root, as the unprivileged user "nobody", so that file
// permissions bind as they do for a person.
//   tool_fault_runner [--file-size-limit BYTES] [--unprivileged] PROGRAM [ARGS...]
// The program gets the default handling of SIGXFSZ, so it must choose to ignore the signal.
#include <grp.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv)
{
    int i = 1;
    bool unprivileged = false;
    rlim_t limit = RLIM_INFINITY;
    for (; i < argc && std::strncmp(argv[i], "--", 2) == 0; ++i) {
        if (std::strcmp(argv[i], "--unprivileged") == 0) {
            unprivileged = true;
        } else if (std::strcmp(argv[i], "--file-size-limit") == 0 && i + 1 < argc) {
            limit = rlim_t(std::strtoull(argv[++i], nullptr, 10));
        } else {
            std::fprintf(stderr, "tool_fault_runner: unknown option %s\n", argv[i]);
            return 127;
        }
    }
    if (i >= argc) {
        std::fprintf(stderr, "usage: tool_fault_runner [--file-size-limit BYTES] [--unprivileged] PROGRAM [ARGS...]\n");
        return 127;
    }
    if (unprivileged && getuid() == 0) {
        const gid_t nobody = 65534;
        if (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0) {
            std::perror("tool_fault_runner: cannot become nobody");
            return 127;
        }
    }
    if (limit != RLIM_INFINITY) {
        const rlimit fileSize{limit, limit};
        if (setrlimit(RLIMIT_FSIZE, &fileSize) != 0) {
            std::perror("tool_fault_runner: cannot limit the file size");
            return 127;
        }
    }
    std::signal(SIGXFSZ, SIG_DFL);
    execv(argv[i], argv + i);
    std::perror("tool_fault_runner: cannot start the program");
    return 127;
}
