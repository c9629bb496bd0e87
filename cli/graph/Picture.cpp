#include "cli/graph/Picture.h"

#include "cli/terminal/Messages.h"
#include "scene/core/OutputFile.h"
#include "scene/core/String.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vrn::cli {

namespace {

// Text as the standard input of a child process. It is in a memory file, because with a pipe this process would have to
// write while the child reads.
class TextInput {
public:
    explicit TextInput(std::string_view text) : descriptor_(memfd_create("vrn", MFD_CLOEXEC)) {
        if (descriptor_ < 0)
            throw std::system_error(errno, std::generic_category());
        if (const int error = vor::writeAll(descriptor_, text)) {
            close(descriptor_);
            throw std::system_error(error, std::generic_category());
        }
        lseek(descriptor_, 0, SEEK_SET);
    }
    TextInput(const TextInput&) = delete;
    TextInput& operator=(const TextInput&) = delete;
    ~TextInput() { close(descriptor_); }
    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

private:
    int descriptor_;
};

pid_t spawnDot(const std::string& format, int input, int output) {
    std::string program = "dot";
    std::string option = "-T" + format;
    const std::array<char*, 3> arguments = {program.data(), option.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t process = 0;
    const int error = posix_spawnp(&process, "dot", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error == ENOENT)
        throw PictureError(messages::dotMissing);
    if (error != 0)
        throw PictureError(vor::String::format(messages::dotNotStarted, strerrordesc_np(error)).buf());
    return process;
}

} // namespace

void drawPicture(std::string_view dotText, const std::string& format, int descriptor) {
    const TextInput input(dotText);
    const pid_t process = spawnDot(format, input.descriptor(), descriptor);
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            throw std::system_error(errno, std::generic_category());
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw PictureError(messages::dotFailed);
}

} // namespace vrn::cli
