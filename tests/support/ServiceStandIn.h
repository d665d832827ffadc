#pragma once

#include "platform/Value.h"
#include "support/WaitUntil.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct sd_bus;

namespace quorbel::testing {

/// Stands in for the service on the bus that DBUS_SYSTEM_BUS_ADDRESS names: owns its name, takes
/// its commands and posts its notifications, on a thread of its own. Safe to use from any thread.
class ServiceStandIn {
public:
    enum class OnCommand {
        kReply,
        kReplyWithError,
        kKeepSilent,
        kDie  ///< closes the connection in the middle of the command
    };

    struct Received {
        Dictionary command;
        std::string sender;   ///< the unique name of the connection that it came over
        bool asFile = false;  ///< through setCommandFile
        int seals = 0;        ///< of that file, as F_GET_SEALS tells them
    };

    using UserInfo = std::vector<std::pair<std::string, std::string>>;

    /// Returns when the name is owned; throws std::runtime_error when it cannot be.
    ServiceStandIn();
    /// Gives the name back before it returns.
    ~ServiceStandIn();
    ServiceStandIn(const ServiceStandIn &) = delete;
    ServiceStandIn &operator=(const ServiceStandIn &) = delete;

    /// What happens to the commands that arrive from now on. Replies ("OK") leave after `delay`;
    /// other commands are taken meanwhile.
    void onCommand(OnCommand reaction, std::chrono::milliseconds delay = {});
    void setReply(std::string reply);
    /// Replies that still wait for their delay leave now.
    void replyNow();

    [[nodiscard]] std::vector<Received> received() const;
    /// The commands received so far, in order, as soon as there are `count` of them or `limit` has
    /// passed.
    [[nodiscard]] std::vector<Dictionary> waitForCommands(
        std::size_t count, std::chrono::milliseconds limit = kPatience) const;
    /// Forgets what was received.
    void clear();

    /// Posts the notification "Quorbel". These return when the bus has taken the last one.
    void notify(const UserInfo &userInfo);
    /// `count` notifications; `userInfo` makes the content of each from its number, from 0.
    void notifyMany(std::size_t count, const std::function<UserInfo(std::size_t)> &userInfo);
    /// With a user information of the type a{sv}.
    void notifyVariants(const Dictionary &userInfo);
    /// With one text instead of a dictionary.
    void notifyText(const std::string &text);

    /// Runs on the stand-in's thread, with its connection; returns when done. For what the other
    /// operations do not offer.
    void run(std::function<void(sd_bus *)> task);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace quorbel::testing
