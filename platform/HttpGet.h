// One document from a web server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct HttpAnswer
{
    bool answered = false;                   // a server has sent at least the head of an answer
    std::optional<std::uint64_t> announced;  // the length by the head; nothing when it tells none
    std::string body;                        // as much as came, and as was wanted
};

// Once, before threads start.
void PrepareHttp();

// Follows redirections, by http and https alone; gives up after two and a half seconds. The system's settings for proxies hold.
// With mostBytes 0 the body is not read. The announced length is never allocated.
HttpAnswer HttpGet(const std::string& address, const std::string& agent, std::size_t mostBytes);
