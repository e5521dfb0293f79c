// What a program asks of the system before and while it runs. posix/ and windows/ each have an
// implementation.
#pragma once

#include <string>
#include <vector>

namespace zeb {

// What the program was started with, without its own name, as UTF-8.
std::vector<std::string> ProgramArguments(int argc, char** argv);

// A peer that went away (a journal, a server) is no reason to end; and as many connections and files may be
// open as the system lets this process have.
void PrepareSystem();

bool StandardErrorIsTerminal();
bool StandardOutputIsTerminal();
// Bytes go through standard input and output as they are, and texts are UTF-8.
void UsePlainStreams();

// Whether an administrator would store here what the owner of the folder could not read.
bool WouldLockOwnerOut(const std::string& folder);

}  // namespace zeb
