// What a reload has to show, worked out from the files of the limits folder in the plainest way,
// with another JSON reader and without any code of the program.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brimwatch::test {

struct OracleWindow {
    double used = 0;
    std::optional<std::int64_t> resetsAt;

    bool operator==(const OracleWindow&) const = default;
};

struct OracleRecord {
    std::string id;
    std::optional<OracleWindow> fiveHour;
    std::optional<OracleWindow> sevenDay;
    std::int64_t updatedAt = 0;

    bool operator==(const OracleRecord&) const = default;
};

class LimitsOracle {
  public:
    // Takes in the folder as it is, at that time in whole seconds since 1970, for those accounts.
    const std::vector<OracleRecord>& reload(const std::string& folder,
                                            const std::set<std::string>& wanted, std::int64_t now);

    const std::vector<OracleRecord>& records() const { return records_; }
    // As in "42%"; empty without a figure.
    std::string title() const;

  private:
    struct File {
        std::map<std::string, OracleWindow> windows;
        std::int64_t updatedAt = 0;
    };

    const File& remember(const std::string& id, File file, std::int64_t now);

    std::map<std::string, File> known_;
    std::vector<OracleRecord> records_;
};

}  // namespace brimwatch::test
