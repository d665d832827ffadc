#pragma once

namespace quorbel::bus {

inline constexpr const char *kServiceName = "com.Halvern.QuorbelSrv";
inline constexpr const char *kServicePath = "/com/Halvern/QuorbelSrv";
inline constexpr const char *kCommandInterface = "com.Halvern.QuorbelSrv.MyXPCProtocol";
inline constexpr const char *kNotificationInterface = "com.Halvern.QuorbelSrv.Notifications";
inline constexpr const char *kNotification = "Quorbel";
inline constexpr const char *kBatch = "QuorbelBatch";
inline constexpr const char *kCheckpoint = "QuorbelCheckpoint";
inline constexpr const char *kListen = "Listen";
inline constexpr const char *kTaken = "Taken";
inline constexpr const char *kStatusInterface = "com.Halvern.QuorbelSrv.Status";
inline constexpr const char *kSetCommand = "setCommand";
inline constexpr const char *kSetCommandFile = "setCommandFile";

}  // namespace quorbel::bus
