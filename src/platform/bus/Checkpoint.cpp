#include "platform/bus/Checkpoint.h"

#include <cerrno>

namespace quorbel::bus {

int appendCheckpoint(sd_bus_message *message, const Checkpoint &checkpoint) {
    const FilePlace &place = checkpoint.place;
    return sd_bus_message_append(message, kCheckpointType, checkpoint.epoch, checkpoint.sets,
                                 checkpoint.removes, checkpoint.edits, place.name.c_str(),
                                 place.file.inode, place.file.born, place.offset);
}

int readCheckpoint(sd_bus_message *message, Checkpoint &checkpoint) {
    const char *name = nullptr;
    FilePlace &place = checkpoint.place;
    const int result = sd_bus_message_read(
        message, kCheckpointType, &checkpoint.epoch, &checkpoint.sets, &checkpoint.removes,
        &checkpoint.edits, &name, &place.file.inode, &place.file.born, &place.offset);
    if (result > 0) {
        place.name = name;
    }
    return result == 0 ? -EBADMSG : result;
}

}  // namespace quorbel::bus
