// SPDX-License-Identifier: Apache-2.0

#include "GenICam/Network.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace TestSupport {

bool enterOwnNetwork() {
    const uid_t user = getuid();
    const gid_t group = getgid();
    if (unshare(CLONE_NEWNET) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
            return false;
        }
        std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    const int any = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq loopback{};
    std::strcpy(loopback.ifr_name, "lo");
    loopback.ifr_flags = IFF_UP | IFF_RUNNING;
    bool isUp = any >= 0 && ioctl(any, SIOCSIFFLAGS, &loopback) == 0;
    for (const char* number : {"2", "3", "4", "5", "6", "7"}) { // cameras listen only on addresses that a card has
        ifreq alias{};
        std::strcpy(alias.ifr_name, (std::string("lo:") + number).c_str());
        auto* const address = reinterpret_cast<sockaddr_in*>(&alias.ifr_addr);
        address->sin_family = AF_INET;
        inet_pton(AF_INET, (std::string("127.0.0.") + number).c_str(), &address->sin_addr);
        isUp = isUp && ioctl(any, SIOCSIFADDR, &alias) == 0;
    }
    close(any);
    return isUp;
}

CameraProcess::CameraProcess(std::vector<std::string> words) : m_Words(std::move(words)) {
    putBack();
}

CameraProcess::~CameraProcess() {
    pull();
}

void CameraProcess::putBack() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    // A forked child may hang before it becomes the camera: AddressSanitizer of clang before 17 leaves the mutexes
    // locked that other threads held.
    std::vector<std::string> words{"setpriv", "--pdeathsig", "KILL"}; // ends the camera with the thread that started it
    words.insert(words.end(), m_Words.begin(), m_Words.end());
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, ends[0], STDIN_FILENO);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const int error = posix_spawnp(&m_Process, arguments[0], &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    close(ends[0]);
    m_Input = ends[1];
    if (error != 0) {
        close(m_Input);
        m_Process = -1;
        throw std::system_error(error, std::generic_category(), arguments[0]);
    }
}

void CameraProcess::pull() {
    if (m_Process > 0) {
        kill(m_Process, SIGKILL);
        waitpid(m_Process, nullptr, 0);
        close(m_Input);
        m_Process = -1;
    }
}

void CameraProcess::tell(const std::string& line) const {
    const std::string text = line + '\n';
    if (write(m_Input, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("the camera does not read its standard input");
    }
}

} // namespace TestSupport
