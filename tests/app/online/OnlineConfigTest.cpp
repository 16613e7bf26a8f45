// Against a server on this machine that answers as it is told, well or badly.
#include "app/online/OnlineConfig.h"

#include "app/online/FirstUse.h"
#include "platform/Folders.h"
#include "platform/HttpGet.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// Gives every request the same bytes, and keeps what was asked.
class Server
{
public:
    explicit Server(std::string answer) : m_answer(std::move(answer))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(m_socket, generic, length), 0);
        EXPECT_EQ(::listen(m_socket, 8), 0);
        EXPECT_EQ(::getsockname(m_socket, generic, &length), 0);
        m_site = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        m_thread = std::thread([this] { Serve(); });
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server()
    {
        m_ends = true;
        m_thread.join();
        ::close(m_socket);
    }

    const std::string& Site() const { return m_site; }
    std::vector<std::string> Requests()
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    void Serve()
    {
        while (!m_ends) {
            pollfd state = {m_socket, POLLIN, 0};
            if (::poll(&state, 1, 20) <= 0) {
                continue;
            }
            const int client = ::accept(m_socket, nullptr, nullptr);
            std::array<char, 4096> request = {};
            const ssize_t got = ::recv(client, request.data(), request.size(), 0);
            {
                const std::lock_guard lock(m_mutex);
                m_requests.emplace_back(request.data(),
                                        got > 0 ? static_cast<std::size_t>(got) : 0);
            }
            ::send(client, m_answer.data(), m_answer.size(), MSG_NOSIGNAL);
            ::shutdown(client, SHUT_WR);
            ::close(client);
        }
    }

    int m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
    std::string m_answer;
    std::string m_site;
    std::mutex m_mutex;
    std::vector<std::string> m_requests;
    std::atomic<bool> m_ends = false;
    std::thread m_thread;
};

const std::string Document = R"({"helpURL": "h", "siteURL": "s", "faqURL": "f", "other": 1})";

std::string Answer(const std::string& body, const std::string& headLines)
{
    return "HTTP/1.1 200 OK\r\n" + headLines + "Connection: close\r\n\r\n" + body;
}

std::string WithLength(const std::string& body)
{
    return Answer(body, "Content-Length: " + std::to_string(body.size()) + "\r\n");
}

struct AnswerCase
{
    const char* name;
    std::string answer;
    // Expected of help, site and FAQ; "-" stands for the default.
    const char* help;
    const char* site;
    const char* faq;
};

const AnswerCase Answers[] = {
    {"a document", WithLength(Document), "h", "s", "f"},
    {"a key is missing, one is a number", WithLength(R"({"helpURL": "h", "siteURL": 7})"), "h", "",
     ""},
    {"a comment in it", WithLength("/* told */ " + Document), "h", "s", "f"},
    {"no length", Answer(Document, ""), "-", "-", "-"},
    {"a length beyond what comes", Answer(Document, "Content-Length: 99999999999\r\n"), "h", "s",
     "f"},
    {"a length of nothing", Answer("", "Content-Length: 0\r\n"), "-", "-", "-"},
    {"cut in the middle", Answer(Document.substr(0, 20), "Content-Length: 60\r\n"), "-", "-", "-"},
    {"a page that is none", WithLength("<html>404</html>"), "-", "-", "-"},
    {"a list", WithLength("[1, 2]"), "-", "-", "-"},
    {"brackets without an end", WithLength(std::string(100000, '[')), "-", "-", "-"},
    {"more than anyone wants", WithLength(std::string(3U << 20U, ' ') + Document), "-", "-", "-"},
    {"no HTTP", "hello\r\n", "-", "-", "-"},
};

TEST(OnlineConfigTest, WhateverTheServerSaysThereAreAddresses)
{
    for (const AnswerCase& row : Answers) {
        Server server(row.answer);
        const OnlineConfig config(server.Site(), "");
        const std::string help = server.Site() + "/user-guide.html";
        const std::string product = server.Site() + "/lumivault.html";
        const auto expected = [](const char* text, const std::string& standard) {
            return text == std::string("-") ? standard : text;
        };
        EXPECT_EQ(config.GetHelpUrl(), expected(row.help, help)) << row.name;
        EXPECT_EQ(config.GetSiteUrl(), expected(row.site, product)) << row.name;
        EXPECT_EQ(config.GetFaqUrl(), expected(row.faq, help)) << row.name;
        EXPECT_EQ(config.GetHomeUrl(), expected(row.site, server.Site())) << row.name;
    }
}

TEST(OnlineConfigTest, TheDocumentComesFromTheSitesOwnFolderAlone)
{
    Server server(WithLength(Document));
    Server other(WithLength(Document));
    OnlineConfig(server.Site(), "");
    OnlineConfig(server.Site(), server.Site() + "/swconfig/test.json");
    OnlineConfig(server.Site(), server.Site() + "/elsewhere.json");
    OnlineConfig(server.Site(), other.Site() + "/swconfig/test.json");
    std::vector<std::string> asked;
    for (const std::string& request : server.Requests()) {
        asked.push_back(request.substr(0, request.find(" HTTP")));
        EXPECT_NE(request.find("User-Agent: codegurubrowser1.0\r\n"), std::string::npos);
    }
    const std::string standard = "GET /swconfig/lv4win.json";
    EXPECT_EQ(asked,
              (std::vector<std::string>{standard, "GET /swconfig/test.json", standard, standard}));
    EXPECT_TRUE(other.Requests().empty());
}

TEST(OnlineConfigTest, WithoutASiteNobodyIsAskedAndThereIsNoAddress)
{
    const OnlineConfig config("", "http://127.0.0.1:1/swconfig/x.json");
    EXPECT_EQ(config.GetHelpUrl() + config.GetSiteUrl() + config.GetFaqUrl(), "");
}

TEST(OnlineConfigTest, TheUsersSettingNamesTheDocument)
{
    const TempFolder folder;
    ASSERT_EQ(::setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1), 0);
    EXPECT_EQ(DocumentOverride(), "");
    std::filesystem::create_directory(folder / "Orvanta");
    std::ofstream(folder / "Orvanta" / "Orvanta Lumivault.conf")
        << "ApplicationURL=http://x/swconfig/y\n";
    EXPECT_EQ(DocumentOverride(), "http://x/swconfig/y");
    std::ofstream(folder / "Orvanta" / "Orvanta Lumivault.conf")
        << "ApplicationURL=" << std::string(5000, 'x');
    EXPECT_EQ(DocumentOverride(), "");
    ::unsetenv("XDG_CONFIG_HOME");
}

TEST(FirstUseTest, TheSiteIsToldOnceWhateverItAnswers)
{
    for (const std::string& answer :
         {WithLength("x"), std::string("HTTP/1.1 500 No\r\n\r\n"), std::string()}) {
        const TempFolder folder;
        Server server(answer);
        const auto marker = folder / "OrvantaLumivault" / "Used";
        for (int use = 0; use < 2; ++use) {
            if (std::thread thread = PingOnFirstUse(server.Site(), marker); thread.joinable()) {
                thread.join();
            }
        }
        const auto requests = server.Requests();
        ASSERT_EQ(requests.size(), 1U);
        EXPECT_TRUE(requests[0].starts_with("GET /O-M/DL/DSOrvantaLumivault.php?v=7.0 HTTP"));
        EXPECT_EQ(std::filesystem::file_size(marker), 0U);
    }
    const TempFolder folder;
    EXPECT_FALSE(PingOnFirstUse("", folder / "a" / "Used").joinable());
    EXPECT_TRUE(PathExists(folder / "a" / "Used"));
}

}  // namespace
