#pragma once

#include "veldctl/Command.h"

/// Each function runs a command and returns the exit status. Throws std::system_error if a system call fails.
int send(const Request& request);
int wait(const Request& request);
int list(const Request& request);
int show(const Request& request);
int remove(const Request& request);
int retry(const Request& request);
int seen(const Request& request);
int follow(const Request& request);
int status(const Request& request);
int check(const Request& request);

/// Every command, in the order of the help.
extern const std::vector<Command> commands;
