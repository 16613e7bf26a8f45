#include "platform/HttpGet.h"

#include <algorithm>
#include <curl/curl.h>
#include <memory>

namespace {

constexpr long ConnectMilliseconds = 2000;
constexpr long WholeMilliseconds = 2500;
constexpr long MostRedirections = 5;

struct CurlEnd
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

struct Body
{
    std::string* text = nullptr;
    std::size_t mostBytes = 0;
};

// Taking less than came ends the transfer; what was taken stands.
std::size_t TakeBody(char* bytes, std::size_t size, std::size_t count, void* context)
{
    const auto& body = *static_cast<Body*>(context);
    const std::size_t came = size * count;
    const std::size_t taken = std::min(came, body.mostBytes - body.text->size());
    try {
        body.text->append(bytes, taken);
    } catch (...) {
        return 0;
    }
    return taken;
}

}  // namespace

void PrepareHttp()
{
    curl_global_init(CURL_GLOBAL_DEFAULT);
}

HttpAnswer HttpGet(const std::string& address, const std::string& agent, std::size_t mostBytes)
{
    HttpAnswer answer;
    const std::unique_ptr<CURL, CurlEnd> handle(curl_easy_init());
    if (handle == nullptr) {
        return answer;
    }
    Body body = {&answer.body, mostBytes};
    CURL* curl = handle.get();
    curl_easy_setopt(curl, CURLOPT_URL, address.c_str());
    curl_easy_setopt(curl, CURLOPT_USERAGENT, agent.c_str());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, ConnectMilliseconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, WholeMilliseconds);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, MostRedirections);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &TakeBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
    const CURLcode result = curl_easy_perform(curl);
    long status = 0;
    curl_off_t announced = -1;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(curl, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    // An answer that broke off is a shorter document; one that ran out of time is none.
    answer.answered = status != 0 && (result == CURLE_OK || result == CURLE_PARTIAL_FILE ||
                                      result == CURLE_WRITE_ERROR);
    if (announced >= 0) {
        answer.announced = static_cast<std::uint64_t>(announced);
    }
    return answer;
}
