#include "service/input/StreamChannel.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quorbel {

namespace {

class PlainChannel final : public StreamChannel {
public:
    explicit PlainChannel(UniqueFd socket) : m_socket(std::move(socket)) {}

    [[nodiscard]] int fd() const override { return m_socket.get(); }
    [[nodiscard]] bool isEstablished() const override { return true; }

    Read read(char *buffer, std::size_t room) override {
        const ssize_t count = ::read(m_socket.get(), buffer, room);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            return {0, Next::kReadable};
        }
        if (count <= 0) {
            return {0, Next::kNothing};
        }
        return {static_cast<std::size_t>(count), Next::kReadable};
    }

private:
    UniqueFd m_socket;
};

}  // namespace

std::size_t heldByKernel(int socket) {
    int count = 0;
    return ::ioctl(socket, FIONREAD, &count) < 0 ? 0 : static_cast<std::size_t>(count);
}

std::unique_ptr<StreamChannel> makePlainChannel(UniqueFd socket, const std::string & /*host*/) {
    return std::make_unique<PlainChannel>(std::move(socket));
}

}  // namespace quorbel
