// The test of addresses that may see credentials: whatever passes means to a parser exactly what it
// says, a file on the one host and nothing else.

#include <QRegularExpression>
#include <QUrl>
#include <cstdint>
#include <string>

#include "require.h"
#include "updates/private_update_url.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QRegularExpression form(
        "\\A/brimwatch/mac/Brimwatch-[0-9]+(?:\\.[0-9]+)*-[0-9]+\\.dmg\\z");
    constexpr const char* host = "updates.example.net";
    const std::string text(reinterpret_cast<const char*>(data), size);
    // The beginning is hard to find.
    for (const std::string& address : {text, "https://updates.example.net/brimwatch/mac/" + text}) {
        const QUrl url(QString::fromStdString(address), QUrl::StrictMode);
        const bool isAllowed = brimwatch::isAllowedUpdateURL(address, host);
        const bool isForm = address.starts_with("https://updates.example.net/") &&
                            form.match(QString::fromStdString(address.substr(27))).hasMatch();
        REQUIRE(isAllowed == isForm);
        if (!isAllowed) continue;
        REQUIRE(url.isValid() && url.scheme() == "https" && url.host() == host);
        REQUIRE(url.port() == -1 && url.userInfo().isEmpty());
        REQUIRE(!url.hasQuery() && !url.hasFragment());
        REQUIRE(url.toEncoded().toStdString() == address);
    }
    return 0;
}
