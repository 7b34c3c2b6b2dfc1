#include "platform/linux/appcast.h"

#include <gmock/gmock.h>

#include "harness/random.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* feedURL = "https://updates.example.net/brimwatch/feed.xml?a=b";

std::string feedOf(const std::string& items) {
    return R"(<?xml version="1.0" encoding="utf-8"?>)"
           R"(<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">)"
           "<channel><title>Brimwatch</title>" +
           items + "</channel></rss>";
}

std::string itemOf(const std::string& content) {
    return "<item><title>t</title><sparkle:version>57</sparkle:version>" + content +
           R"(<enclosure url="https://example.net/a.dmg" length="10" sparkle:edSignature="c2ln"/>)"
           "</item>";
}

auto parse(const std::string& text, const std::string& language = "ko") {
    return parseAppcast(QByteArray::fromStdString(text), feedURL, language);
}

// Of a feed with one item.
AppcastItem parseItem(const std::string& item, const std::string& language = "ko") {
    const auto items = parse(feedOf(item), language);
    EXPECT_TRUE(items && items->size() == 1) << item;
    return items && items->size() == 1 ? items->front() : AppcastItem();
}

TEST(Appcast, AnItemTellsVersionFileLengthAndSignature) {
    const AppcastItem item = parseItem(R"(<item>
        <title>Version 1.4.2</title>
        <sparkle:version> 57 </sparkle:version>
        <sparkle:shortVersionString>1.4.2</sparkle:shortVersionString>
        <description><![CDATA[<b>New</b>]]></description>
        <enclosure url="https://example.net/a.dmg" length="1234" type="application/octet-stream"
                   sparkle:edSignature="c2ln"/></item>)");
    EXPECT_EQ(item.update, (UpdateItem{.version = "57",
                                       .displayVersion = "1.4.2",
                                       .fileURL = "https://example.net/a.dmg"}));
    EXPECT_EQ(item.length, 1234);
    EXPECT_EQ(item.signature, "c2ln");
    EXPECT_FALSE(item.isInformational);
    EXPECT_FALSE(item.isCritical);
}

TEST(Appcast, HasAnyNumberOfItemsInTheirOrder) {
    EXPECT_THAT(*parse(feedOf("")), IsEmpty());
    const auto items = parse(feedOf(itemOf("") + "<other><item/></other>" + itemOf("")));
    ASSERT_TRUE(items);
    EXPECT_EQ(items->size(), 2U);
}

TEST(Appcast, TheAttributeWinsOverTheElementAndTheFileNameIsLast) {
    EXPECT_EQ(parseItem(R"(<item><sparkle:version>1</sparkle:version>
        <sparkle:shortVersionString>1.0</sparkle:shortVersionString><enclosure
        url="https://a/b_3.zip" sparkle:version="2" sparkle:shortVersionString="2.0"/></item>)")
                  .update.version,
              "2");
    EXPECT_EQ(parseItem(R"(<item><sparkle:version>1</sparkle:version><enclosure
        url="https://a/b_3.zip" sparkle:shortVersionString="2.0"/></item>)")
                  .update.displayVersion,
              "2.0");
    EXPECT_EQ(
        parseItem(R"(<item><enclosure url="https://a/x_y/b_1_3.5.zip"/></item>)").update.version,
        "3.5");
    EXPECT_EQ(parseItem(R"(<item><enclosure url="https://a/b_3"/></item>)").update.version, "3");
}

TEST(Appcast, AnItemWithoutAVersionSpoilsTheFeed) {
    EXPECT_EQ(parse(feedOf(itemOf("") + R"(<item><enclosure url="https://a/b.zip"/></item>)")),
              std::nullopt);
    EXPECT_EQ(parse(feedOf(R"(<item><enclosure url="https://a_b/c.zip"/></item>)")), std::nullopt);
    EXPECT_EQ(parse(feedOf(R"(<item><enclosure url="https://a/c_.zip"/></item>)")), std::nullopt);
}

TEST(Appcast, AnItemWithNeitherFileNorPageSpoilsTheFeed) {
    EXPECT_EQ(parse(feedOf("<item><sparkle:version>1</sparkle:version></item>")), std::nullopt);
    EXPECT_EQ(parse(feedOf("<item><sparkle:version>1</sparkle:version>"
                           "<enclosure url=\"ftp://a/b\"/></item>")),
              std::nullopt);
}

TEST(Appcast, AnItemWithAPageAloneIsInformationalForAll) {
    const AppcastItem item = parseItem(
        "<item><sparkle:version>1</sparkle:version><link>https://a/</link>"
        "<sparkle:informationalUpdate><sparkle:version>0</sparkle:version>"
        "</sparkle:informationalUpdate></item>");
    EXPECT_TRUE(item.isInformational);
    EXPECT_THAT(item.informationalVersions, IsEmpty());
    EXPECT_EQ(item.update.infoURL, "https://a/");
    EXPECT_EQ(item.update.fileURL, std::nullopt);
}

TEST(Appcast, PagesOfAnItemAreKept) {
    const AppcastItem item =
        parseItem(itemOf("<link>https://a/</link>"
                         "<sparkle:releaseNotesLink>notes.html</sparkle:releaseNotesLink>"
                         "<sparkle:fullReleaseNotesLink>/all</sparkle:fullReleaseNotesLink>"));
    EXPECT_EQ(item.update.infoURL, "https://a/");
    EXPECT_EQ(item.update.releaseNotesURL, "https://updates.example.net/brimwatch/notes.html");
    EXPECT_EQ(item.update.fullReleaseNotesURL, "https://updates.example.net/all");
}

TEST(Appcast, ADescriptionThatIsAnAddressIsAPageOfReleaseNotes) {
    EXPECT_EQ(parseItem(itemOf("<description> https://a/n</description>")).update.releaseNotesURL,
              "https://a/n");
    EXPECT_EQ(parseItem(itemOf("<description>http://a/n</description>"
                               "<sparkle:releaseNotesLink>https://b</sparkle:releaseNotesLink>"))
                  .update.releaseNotesURL,
              "https://b");
    EXPECT_EQ(
        parseItem(itemOf("<description>see https://a/n</description>")).update.releaseNotesURL,
        std::nullopt);
    EXPECT_EQ(
        parseItem(itemOf("<description><p>a <b>b</b></p></description>")).update.releaseNotesURL,
        std::nullopt);
}

TEST(Appcast, ALinkThatIsNoWebAddressIsNone) {
    for (const char* link : {"javascript:alert(1)", "file:///etc/passwd", "data:,x", "HTTPS://a"})
        EXPECT_EQ(parseItem(itemOf("<link>" + std::string(link) + "</link>")).update.infoURL,
                  std::nullopt)
            << link;
}

TEST(Appcast, DeltasAreToldByTheVersionsThatTheyStartFrom) {
    const AppcastItem item = parseItem(itemOf(
        R"(<sparkle:deltas><enclosure url="https://a/1" sparkle:deltaFrom="55"/>)"
        R"(<enclosure url="https://a/2" sparkle:deltaFrom="56"/><enclosure url="https://a/3"/>)"
        "</sparkle:deltas>"));
    EXPECT_THAT(item.update.deltaUpdates, ElementsAre("55", "56", ""));
    EXPECT_FALSE(item.update.isDeltaUpdate);
    EXPECT_EQ(item.update.fileURL, "https://example.net/a.dmg");
    EXPECT_TRUE(
        parseItem(R"(<item><enclosure url="https://a/b_3.zip" sparkle:deltaFrom="2"/></item>)")
            .update.isDeltaUpdate);
}

TEST(Appcast, ConditionsOfAnItemAreKept) {
    const AppcastItem item = parseItem(
        "<item><sparkle:version>57</sparkle:version><sparkle:channel>beta</sparkle:channel>"
        "<sparkle:hardwareRequirements>arm64</sparkle:hardwareRequirements>"
        "<sparkle:minimumUpdateVersion>40</sparkle:minimumUpdateVersion>"
        "<sparkle:minimumAutoupdateVersion>50</sparkle:minimumAutoupdateVersion>"
        "<sparkle:ignoreSkippedUpgradesBelowVersion>45</sparkle:ignoreSkippedUpgradesBelowVersion>"
        "<sparkle:phasedRolloutInterval>86400</sparkle:phasedRolloutInterval>"
        "<pubDate>Mon, 21 Sep 2026 15:33:20 +0200</pubDate>"
        R"(<enclosure url="https://a/b" sparkle:os="linux" sparkle:installationType="package"/></item>)");
    EXPECT_EQ(item.channel, "beta");
    EXPECT_EQ(item.processor, "arm64");
    EXPECT_EQ(item.minimumUpdateVersion, "40");
    EXPECT_EQ(item.minimumAutoupdateVersion, "50");
    EXPECT_EQ(item.ignoreSkippedUpgradesBelowVersion, "45");
    EXPECT_EQ(item.phasedRolloutIntervalSeconds, 86'400);
    EXPECT_EQ(item.published, instantFromUnixSeconds(1'789'997'600));
    EXPECT_EQ(item.operatingSystem, "linux");
    EXPECT_EQ(item.installationType, "package");
}

TEST(Appcast, NumbersAndDatesThatAreNoneAreAbsent) {
    const AppcastItem item = parseItem(
        "<item><sparkle:version>57</sparkle:version><pubDate>tomorrow</pubDate>"
        "<sparkle:phasedRolloutInterval>-5</sparkle:phasedRolloutInterval>"
        R"(<enclosure url="https://a/b" length="-10"/></item>)");
    EXPECT_EQ(item.published, std::nullopt);
    EXPECT_EQ(item.phasedRolloutIntervalSeconds, std::nullopt);
    EXPECT_EQ(item.length, 0);
    for (const char* length : {"", "ten", "1e3", "99999999999999999999"})
        EXPECT_EQ(
            parseItem("<item><sparkle:version>57</sparkle:version><enclosure url=\"https://a/b\""
                      " length=\"" +
                      std::string(length) + "\"/></item>")
                .length,
            0)
            << length;
}

TEST(Appcast, AnItemIsCriticalForAllOrBelowAVersion) {
    EXPECT_TRUE(parseItem(itemOf("<sparkle:criticalUpdate/>")).isCritical);
    const AppcastItem bounded =
        parseItem(itemOf(R"(<sparkle:criticalUpdate sparkle:version="50"/>)"));
    EXPECT_TRUE(bounded.isCritical);
    EXPECT_EQ(bounded.criticalBelowVersion, "50");
    EXPECT_TRUE(
        parseItem(itemOf("<sparkle:tags><sparkle:criticalUpdate/></sparkle:tags>")).isCritical);
    EXPECT_FALSE(parseItem(itemOf("<sparkle:tags><sparkle:other/></sparkle:tags>")).isCritical);
}

TEST(Appcast, AnItemIsInformationalForSomeVersions) {
    const AppcastItem item =
        parseItem(itemOf("<sparkle:informationalUpdate><sparkle:version>50</sparkle:version>"
                         "<sparkle:belowVersion>40</sparkle:belowVersion><sparkle:version>51"
                         "</sparkle:version></sparkle:informationalUpdate>"));
    EXPECT_TRUE(item.isInformational);
    EXPECT_THAT(item.informationalVersions, ElementsAre("50", "51"));
    EXPECT_THAT(item.informationalBelowVersions, ElementsAre("40"));
}

TEST(Appcast, TheLanguageOfTheUserCountsThenEnglishThenTheFirst) {
    const std::string item =
        itemOf(R"(<link xml:lang="de">https://de</link><link>https://en</link>)"
               R"(<link xml:lang="ko-KR">https://ko</link><link xml:lang="ko">https://ko2</link>)"
               R"(<link xml:lang="en">https://en2</link>)");
    EXPECT_EQ(parseItem(item, "ko").update.infoURL, "https://ko");
    EXPECT_EQ(parseItem(item, "fr").update.infoURL, "https://en");
    EXPECT_EQ(parseItem(item, "de").update.infoURL, "https://de");
    EXPECT_EQ(parseItem(itemOf(R"(<link xml:lang="ja">https://ja</link>)"
                               R"(<link xml:lang="de">https://de</link>)"))
                  .update.infoURL,
              "https://ja");
}

TEST(Appcast, ThePrefixOfTheNamespaceIsFree) {
    const auto items = parse(
        R"(<rss xmlns:s="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel><item>)"
        R"(<s:version>57</s:version><enclosure url="https://a/b" s:edSignature="c2ln"/>)"
        "</item></channel></rss>");
    ASSERT_TRUE(items);
    EXPECT_EQ(items->front().update.version, "57");
    EXPECT_EQ(items->front().signature, "c2ln");
}

TEST(Appcast, OtherDocumentsAreNone) {
    for (const char* text :
         {"", "x", "{}", "<rss/>", "<html><body/></html>", "<rss><channel><item></channel></rss>",
          "<channel/>", "<feed xmlns=\"http://www.w3.org/2005/Atom\"/>", "<rss><channel>"})
        EXPECT_EQ(parse(text), std::nullopt) << text;
}

TEST(Appcast, AFeedThatIsCutShortAnywhereIsNone) {
    const std::string whole = feedOf(itemOf("<link>https://a/</link>") + itemOf(""));
    ASSERT_TRUE(parse(whole));
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(parse(whole.substr(0, length)), std::nullopt) << length;
}

TEST(Appcast, WhatFollowsTheFeedIsAComment) {
    EXPECT_TRUE(parse(feedOf(itemOf("")) + "<!-- sparkle-signatures:\nedSignature: AA==\n-->\n"));
    EXPECT_EQ(parse(feedOf(itemOf("")) + "<rss/>"), std::nullopt);
}

TEST(Appcast, ADocumentTypeIsRefused) {
    EXPECT_EQ(parse("<!DOCTYPE rss [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;\">]>"
                    "<rss><channel/></rss>"),
              std::nullopt);
    EXPECT_EQ(parse("<!DOCTYPE rss SYSTEM \"file:///etc/passwd\"><rss><channel/></rss>"),
              std::nullopt);
}

TEST(Appcast, IsAMebibyteAtMost) {
    std::string text = feedOf(itemOf(""));
    text.append(static_cast<std::size_t>(appcastSizeLimit) - text.size(), '\n');
    EXPECT_TRUE(parse(text));
    EXPECT_EQ(parse(text + '\n'), std::nullopt);
}

TEST(Appcast, DeepNestingIsNoHarm) {
    std::string text;
    for (int depth = 0; depth < 50'000; ++depth)
        text += "<a>";
    EXPECT_EQ(parse(feedOf(text)), std::nullopt);
    std::string whole = text;
    for (int depth = 0; depth < 50'000; ++depth)
        whole += "</a>";
    EXPECT_TRUE(parse(feedOf(whole + itemOf(""))));
}

TEST(Appcast, AddressesAreMadeAbsoluteByTheirText) {
    const std::string base = "https://host:1/a/b/c.xml?q=/x#f";
    EXPECT_EQ(resolvedAddress(base, "https://other/%42"), "https://other/%42");
    EXPECT_EQ(resolvedAddress(base, "//other/x"), "https://other/x");
    EXPECT_EQ(resolvedAddress(base, "/x"), "https://host:1/x");
    EXPECT_EQ(resolvedAddress(base, "x%42"), "https://host:1/a/b/x%42");
    EXPECT_EQ(resolvedAddress(base, "../x"), "https://host:1/a/b/../x");
    EXPECT_EQ(resolvedAddress(base, "a b c"), "https://host:1/a/b/a%20b%20c");
    EXPECT_EQ(resolvedAddress("https://host", "x"), "https://host/x");
    EXPECT_EQ(resolvedAddress("https://host?q", "/x"), "https://host/x");
    EXPECT_EQ(resolvedAddress("nonsense", "x"), "x");
    EXPECT_EQ(resolvedAddress(base, "x/y:z"), "https://host:1/a/b/x/y:z");
}

TEST(Appcast, SurvivesAnyBytesInItsPlace) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::string good = feedOf(itemOf("<sparkle:deltas/><sparkle:tags/>"));
    for (int round = 0; round < 3000; ++round) {
        std::string text = good;
        for (int change = 0; change < 3; ++change)
            text[random.below(text.size())] = static_cast<char>(random.below(256));
        const auto items = parse(text);
        for (const AppcastItem& item : items.value_or(std::vector<AppcastItem>())) {
            EXPECT_NE(item.update.version, "");
            EXPECT_TRUE(item.update.fileURL || item.update.infoURL);
        }
    }
}

}  // namespace
}  // namespace brimwatch
