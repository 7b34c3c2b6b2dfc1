// The cloud of the tests as a program of its own: sample_cloud FOLDER
//
// FOLDER gets `address`, where it is asked, `token`, which the browser of its one user brings back
// from the page where he signs in, `tokens` with all that were ever given to him, a line each, and
// with each request anew `records` with the payload of every record in the file of its name.

#include <QCoreApplication>
#include <QTimer>
#include <filesystem>
#include <fstream>
#include <string>

#include "record_server/record_server.h"

namespace {

namespace fs = std::filesystem;
using brimwatch::test::RecordServer;

// Whoever reads meanwhile sees the former content or this one.
void write(const fs::path& path, const std::string& content) {
    const fs::path draft = path.parent_path() / ".draft";
    std::ofstream(draft, std::ios::binary) << content;
    fs::rename(draft, path);
}

void writeRecords(const fs::path& folder, RecordServer& server) {
    for (const auto& [name, record] : server.records())
        write(folder / name, server.payload(name).value_or(std::string()));
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (server.records().count(entry.path().filename()) == 0) fs::remove(entry.path());
}

}  // namespace

int main(int argumentCount, char** arguments) {
    QCoreApplication application(argumentCount, arguments);
    if (argumentCount != 2) return 2;
    const fs::path folder = arguments[1];
    const fs::path records = folder / "records";
    fs::create_directories(records);

    RecordServer server;
    write(folder / "token", server.signIn("user"));
    QTimer afterRequest;
    afterRequest.setSingleShot(true);
    QObject::connect(&afterRequest, &QTimer::timeout, [&] {
        writeRecords(records, server);
        std::ofstream(folder / "tokens", std::ios::app) << server.tokenOf("user") << '\n';
    });
    constexpr int longerThanARequest = 50;  // milliseconds
    server.beforeEach(
        [&](const RecordServer::Request&) { afterRequest.start(longerThanARequest); });
    write(folder / "address", server.address());
    return QCoreApplication::exec();
}
