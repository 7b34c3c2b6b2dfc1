// The feed of updates: each item that is read has a version and something to fetch or to look at,
// and none that is not newer is ever chosen.

#include <cstdint>

#include "platform/linux/appcast_version.h"
#include "platform/linux/update_choice.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto items =
        brimwatch::parseAppcast(bytes, "https://updates.example.net/brimwatch/feed.xml", "ko");
    if (!items) return 0;
    for (const brimwatch::AppcastItem& item : *items) {
        REQUIRE(!item.update.version.empty());
        REQUIRE(item.update.fileURL || item.update.infoURL);
        REQUIRE(item.length >= 0);
        REQUIRE(item.update.fileURL || item.isInformational);
    }
    for (const auto check :
         {brimwatch::UpdateCheck::byUser, brimwatch::UpdateCheck::inBackground}) {
        const auto chosen = brimwatch::chooseUpdate(
            *items, {.runningVersion = "57", .processor = "x86_64", .check = check});
        if (!chosen) continue;
        REQUIRE(brimwatch::compareVersions("57", chosen->update.version) < 0);
        REQUIRE(!chosen->update.isDeltaUpdate);
    }
    return 0;
}
