// What the measured status lines find around them, in a temporary folder of its own: captured
// documents of Claude Code, home folders, and the socket on which the application would listen.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brimwatch::bench {

class StatusLineStage {
  public:
    // `document` is a status line document with both windows, `parent` the folder to make it in.
    StatusLineStage(std::string document, const std::string& parent);
    StatusLineStage(const StatusLineStage&) = delete;
    StatusLineStage& operator=(const StatusLineStage&) = delete;
    ~StatusLineStage();  // with the folder

    // The document with reset times of the future, never changed.
    std::string steadyDocument() const { return file("steady.json"); }
    // The same for which `moveFigures` gives the five-hour window a later reset, so that the
    // figures count as changed.
    std::string movingDocument() const { return file("moving.json"); }
    void moveFigures();

    // A copy of a program as an installation makes it. The page cache keeps a file that was just
    // linked in small pieces, which costs each start a tenth more.
    std::string install(const std::string& program) const;

    // An environment whose home folder has that name.
    // The home holds settings, as the application leaves them.
    std::vector<std::string> environment(std::string_view home) const;
    // Removes the limits file of that home, so that the next run writes it anew.
    void forgetFigures(std::string_view home) const;

    // How many limits-changed datagrams have come since the last call.
    int takeDatagrams() const;

    // A path in the folder, for a file of the caller's own.
    std::string file(std::string_view name) const { return folder_ + '/' + std::string(name); }

  private:
    void listen();
    void writeDocument(const std::string& path, std::int64_t fiveHourReset) const;

    std::string document_;
    std::string folder_;
    std::int64_t sevenDayReset_;  // seconds since 1970-01-01 UTC
    std::int64_t fiveHourReset_;
    int socket_ = -1;
};

}  // namespace brimwatch::bench
