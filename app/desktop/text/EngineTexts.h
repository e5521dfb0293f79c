// The engine's own texts that windows draw, for translators: statuses, panels, questions and boxes. They are
// written where the engine says them; here they stand as patterns, %1 for what is put in. scripts/texts lists
// them, and finds out when the engine says something else.
#pragma once

#include <string_view>

namespace zeb {

inline constexpr std::string_view kEngineTexts[] = {
    // panels
    "Information Update received, waiting..",
    "Information Update received, Updating..",
    "Information Update received, updating..",
    "Forcing Information Update, waiting..",
    "TA",
    "No controller connected",
    "%1 has Control",
    "Bounce Connecting..",
    "Bounce Connected..",
    "Have Bounce Control..",
    "Bounce has refused Control..",
    "Bounce Control Ended..",
    "Bounce Disconnected..",
    "Bounce Disconnected.. (the remote does not take the information)",
    // statuses
    "Off",
    "Connecting",
    "Connected",
    "Starting",
    "Paused",
    "Stopping",
    "Stopped",
    "Logging On",
    "Logging on",
    "OK",
    "Error",
    "Unknown",
    "Source File Prob.",
    "Dest. File Prob.",
    // what outputs say of themselves
    "No files to update",
    "Update %1 file",
    "Update %1 files",
    "No Encoder type selected",
    "no server set",
    // the pair dialog, of a page or a file
    "File",
    "Page",
    "&Source %1 ...",
    "&Output %1 ",
    "Only update this %1 according to the following rules:",
    "Update this %1 when there is no item to display",
    "Update this %1 when any of the following are true:",
    "Select the Source %1 you want to use:",
    "You must choose a Source %1 to use.",
    "You must choose an Destination %1 to use.",
    // what an item is
    "Song",
    "Advert",
    "Jingle",
    "Cart",
    // boxes
    "There was a problem %1",
    "There was a problem %1 and the error's description was reported as : \n\n\"%2\"",
    "adding a service",
    "saving the settings of service %1",
    "removing a service",
    "The Debug Files folder could not be created in '%1'!",
    "The username for HTTP Authentication is blank",
    "The password for HTTP Authentication is blank",
    "Are you sure you want to remove the Service \"%1\"?",
    "If Tolvan is using ZEB as it's 'On-Air Controller' then it will be automatically switch itself "
    "'Off-Air'\n"
    "Are you sure you want to quit from ZEB?",
    "ZEB cannot be closed until it has finished updating it's outputs\n\n"
    "Do you want it to close when it has finished?",
    "Another publisher already runs on the data folder '%1', and only one can publish at a time.",
    "Another publisher already runs on the data folder '%1', and only one can publish at a time.\n\n"
    "Its web page shows what is on air: %2",
    // the splash
    "Initialising settings..",
    "Updates in progress..",
    "Waiting to exit",
};

}  // namespace zeb
