#include "platform/linux/appcast.h"

#include <QDateTime>
#include <QString>
#include <QXmlStreamReader>
#include <algorithm>
#include <map>
#include <utility>

namespace brimwatch {
namespace {

constexpr QLatin1String sparkleNamespace("http://www.andymatuschak.org/xml-namespaces/sparkle");

using Texts = std::map<QString, QString>;

// Sparkle's own names begin with "sparkle:", whatever prefix the feed uses.
QString nameOf(QStringView space, const QStringView prefix, const QStringView name) {
    const bool isSparkle = space == sparkleNamespace || prefix == QLatin1String("sparkle");
    return (isSparkle ? QString("sparkle:") : QString()) + name.toString();
}

QString nameOf(const QXmlStreamReader& xml) {
    return nameOf(xml.namespaceUri(), xml.prefix(), xml.name());
}

Texts attributesOf(const QXmlStreamReader& xml) {
    Texts attributes;
    for (const QXmlStreamAttribute& attribute : xml.attributes())
        attributes[nameOf(attribute.namespaceUri(), attribute.prefix(), attribute.name())] =
            attribute.value().toString();
    return attributes;
}

std::optional<std::string> textAt(const Texts& texts, const char* name) {
    const auto found = texts.find(QLatin1String(name));
    if (found == texts.end()) return std::nullopt;
    const QString text = found->second.trimmed();
    return text.isEmpty() ? std::nullopt : std::optional(text.toStdString());
}

bool isWebAddress(const std::string& text) {
    return text.starts_with("http://") || text.starts_with("https://");
}

// One item while it is read.
class ItemReader {
  public:
    ItemReader(QXmlStreamReader& xml, const std::string& feedURL, const std::string& language)
        : xml_(xml), feedURL_(feedURL), language_(QString::fromStdString(language)) {}

    std::optional<AppcastItem> read() {
        while (xml_.readNextStartElement())
            readElement();
        if (xml_.hasError()) return std::nullopt;
        return build();
    }

  private:
    void readElement() {
        const QString name = nameOf(xml_);
        const Texts attributes = attributesOf(xml_);
        if (name == QLatin1String("enclosure")) {
            if (isBetter(name)) enclosure_ = attributes;
            xml_.skipCurrentElement();
        } else if (name == QLatin1String("sparkle:deltas")) {
            readDeltas();
        } else if (name == QLatin1String("sparkle:informationalUpdate")) {
            readInformational();
        } else if (name == QLatin1String("sparkle:criticalUpdate")) {
            readCritical(attributes);
            xml_.skipCurrentElement();
        } else if (name == QLatin1String("sparkle:tags")) {
            readTags();
        } else {
            const bool counts = isBetter(name);
            const QString text = xml_.readElementText(QXmlStreamReader::IncludeChildElements);
            if (counts) texts_[name] = text;
        }
    }

    // Whether the element speaks to the user better than those of its name before it.
    bool isBetter(const QString& name) {
        const auto tag = xml_.attributes().value(QLatin1String("xml:lang")).toString();
        const QString primary = tag.section('-', 0, 0).toLower();
        int score = 1;
        if (primary == language_) {
            score = 3;
        } else if (primary.isEmpty() || primary == QLatin1String("en")) {
            score = 2;
        }
        int& best = scores_[name];
        return score > best ? (best = score, true) : false;
    }

    void readDeltas() {
        while (xml_.readNextStartElement()) {
            if (nameOf(xml_) == QLatin1String("enclosure"))
                item_.update.deltaUpdates.push_back(
                    textAt(attributesOf(xml_), "sparkle:deltaFrom").value_or(std::string()));
            xml_.skipCurrentElement();
        }
    }

    void readInformational() {
        item_.isInformational = true;
        while (xml_.readNextStartElement()) {
            const QString name = nameOf(xml_);
            const std::string version =
                xml_.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
            if (name == QLatin1String("sparkle:version"))
                item_.informationalVersions.push_back(version);
            if (name == QLatin1String("sparkle:belowVersion"))
                item_.informationalBelowVersions.push_back(version);
        }
    }

    void readCritical(const Texts& attributes) {
        item_.isCritical = true;
        item_.criticalBelowVersion = textAt(attributes, "sparkle:version");
    }

    void readTags() {
        while (xml_.readNextStartElement()) {
            if (nameOf(xml_) == QLatin1String("sparkle:criticalUpdate")) item_.isCritical = true;
            xml_.skipCurrentElement();
        }
    }

    std::optional<AppcastItem> build() {
        setAddresses();
        const std::optional<std::string> version = findVersion();
        if (!version || (!item_.update.fileURL && !item_.update.infoURL)) return std::nullopt;
        item_.update.version = *version;
        item_.update.displayVersion =
            attributeOrElement("sparkle:shortVersionString").value_or(*version);
        item_.update.isDeltaUpdate = textAt(enclosure_, "sparkle:deltaFrom").has_value();
        setConditions();
        return std::move(item_);
    }

    void setAddresses() {
        UpdateItem& update = item_.update;
        update.fileURL = address(textAt(enclosure_, "url"));
        update.infoURL = webAddress("link");
        update.releaseNotesURL = webAddress("sparkle:releaseNotesLink");
        update.fullReleaseNotesURL = webAddress("sparkle:fullReleaseNotesLink");
        const std::optional<std::string> description = textAt(texts_, "description");
        if (!update.releaseNotesURL && description && isWebAddress(*description))
            update.releaseNotesURL = *description;
        const QString length = QString::fromStdString(textAt(enclosure_, "length").value_or(""));
        item_.length = std::max<qint64>(length.toLongLong(), 0);
        item_.signature = textAt(enclosure_, "sparkle:edSignature").value_or("");
        if (!update.fileURL) becomeInformationalForAll();
    }

    void becomeInformationalForAll() {
        item_.isInformational = true;
        item_.informationalVersions.clear();
        item_.informationalBelowVersions.clear();
    }

    void setConditions() {
        item_.operatingSystem = textAt(enclosure_, "sparkle:os").value_or("");
        item_.installationType = textAt(enclosure_, "sparkle:installationType").value_or("");
        item_.processor = textAt(texts_, "sparkle:hardwareRequirements").value_or("");
        item_.channel = textAt(texts_, "sparkle:channel").value_or("");
        item_.minimumUpdateVersion = textAt(texts_, "sparkle:minimumUpdateVersion");
        item_.minimumAutoupdateVersion = textAt(texts_, "sparkle:minimumAutoupdateVersion");
        item_.ignoreSkippedUpgradesBelowVersion =
            textAt(texts_, "sparkle:ignoreSkippedUpgradesBelowVersion");
        const QDateTime date = QDateTime::fromString(
            QString::fromStdString(textAt(texts_, "pubDate").value_or("")), Qt::RFC2822Date);
        if (date.isValid())
            item_.published = instantFromUnixSeconds(static_cast<double>(date.toSecsSinceEpoch()));
        bool isNumber = false;
        const auto interval =
            QString::fromStdString(textAt(texts_, "sparkle:phasedRolloutInterval").value_or(""))
                .toLongLong(&isNumber);
        if (isNumber && interval > 0) item_.phasedRolloutIntervalSeconds = interval;
    }

    std::optional<std::string> attributeOrElement(const char* name) const {
        const std::optional<std::string> attribute = textAt(enclosure_, name);
        return attribute ? attribute : textAt(texts_, name);
    }

    // Else what stands behind the last underscore of the file's name.
    std::optional<std::string> findVersion() const {
        std::optional<std::string> version = attributeOrElement("sparkle:version");
        if (version || !item_.update.fileURL) return version;
        std::string name = *item_.update.fileURL;
        name.erase(0, name.rfind('/') + 1);
        const std::size_t underscore = name.rfind('_');
        if (underscore == std::string::npos) return std::nullopt;
        name.resize(std::max(underscore + 1, std::min(name.rfind('.'), name.size())));
        name.erase(0, underscore + 1);
        return name.empty() ? std::nullopt : std::optional(name);
    }

    std::optional<std::string> address(const std::optional<std::string>& text) const {
        if (!text) return std::nullopt;
        const std::string resolved = resolvedAddress(feedURL_, *text);
        return isWebAddress(resolved) ? std::optional(resolved) : std::nullopt;
    }
    std::optional<std::string> webAddress(const char* name) const {
        return address(textAt(texts_, name));
    }

    QXmlStreamReader& xml_;
    const std::string& feedURL_;
    QString language_;
    Texts texts_;
    Texts enclosure_;
    std::map<QString, int> scores_;
    AppcastItem item_;
};

// Moves into the next child of that name, past the others.
bool enter(QXmlStreamReader& xml, const char* name) {
    while (xml.readNextStartElement()) {
        if (nameOf(xml) == QLatin1String(name)) return true;
        xml.skipCurrentElement();
    }
    return false;
}

// Entities of its own could make a small document a large one.
bool hasDocumentType(const QByteArray& bytes) {
    QXmlStreamReader xml(bytes);
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::DTD) return true;
        if (token == QXmlStreamReader::StartElement) return false;
    }
    return false;
}

bool readToEnd(QXmlStreamReader& xml) {
    while (!xml.atEnd())
        xml.readNext();
    return !xml.hasError();
}

}  // namespace

std::string resolvedAddress(const std::string& base, const std::string& reference) {
    std::string text = reference;
    for (std::size_t blank = text.find(' '); blank != std::string::npos; blank = text.find(' '))
        text.replace(blank, 1, "%20");
    const std::size_t colon = text.find(':');
    if (colon != std::string::npos && colon < text.find_first_of("/?#")) return text;
    const std::size_t host = base.find("//");
    if (host == std::string::npos) return text;
    if (text.starts_with("//")) return base.substr(0, host) + text;
    const std::size_t path = std::min(base.find_first_of("/?#", host + 2), base.size());
    if (text.starts_with('/')) return base.substr(0, path) + text;
    const std::string place = base.substr(0, base.find_first_of("?#"));
    const std::size_t slash = place.rfind('/');
    return (slash < path ? place + '/' : place.substr(0, slash + 1)) + text;
}

std::optional<std::vector<AppcastItem>> parseAppcast(const QByteArray& bytes,
                                                     const std::string& feedURL,
                                                     const std::string& language) {
    if (bytes.size() > appcastSizeLimit || hasDocumentType(bytes)) return std::nullopt;
    QXmlStreamReader xml(bytes);
    if (!enter(xml, "rss") || !enter(xml, "channel")) return std::nullopt;
    std::vector<AppcastItem> items;
    while (enter(xml, "item")) {
        std::optional<AppcastItem> item = ItemReader(xml, feedURL, language).read();
        if (!item) return std::nullopt;
        items.push_back(*std::move(item));
    }
    if (!readToEnd(xml)) return std::nullopt;
    return items;
}

}  // namespace brimwatch
