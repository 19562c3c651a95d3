#include "standin/launcher/logs.h"

#include "standin/i2c_bus/server/bus_server.h"
#include "standin/image/image_reader.h"
#include "standin/lib/log_file.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

namespace standin {

// The open file of a log, and the errno of its first lost line.
class Logs::File {
public:
    File(const std::string& path, std::optional<std::int64_t> start)
        : file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC | O_NOCTTY,
                       0666)),
          start_(start) {
        if (file_.number() < 0) {
            throw std::system_error(errno, std::generic_category(), path);
        }
    }

    void write(const std::string& line) {
        const std::string time = start_ ? timeText(*start_, monotonicTime()) + " " : "";
        const int error = writeLine(file_.number(), time + line);
        if (error_ == 0) {
            error_ = error;
        }
    }

    [[nodiscard]] int error() const { return error_; }

private:
    Descriptor file_;
    std::optional<std::int64_t> start_;
    int error_ = 0;
};

std::unique_ptr<Logs::File> Logs::open(const std::string& path) const {
    const auto start = files_.times ? std::optional(start_) : std::nullopt;
    return path.empty() ? nullptr : std::make_unique<File>(path, start);
}

Logs::Logs(LogFiles files, std::int64_t start) : files_(std::move(files)), start_(start) {
    debug_ = open(files_.debug);
    calls_ = open(files_.calls);
    i2c_ = open(files_.i2c);
    bus_ = open(files_.bus);
}

Logs::~Logs() = default;

// The paths are absolute, because the command may change directories.
Environment Logs::environment() const {
    Environment environment;
    for (const auto& [variable, path] :
         {std::pair(debugLogVariable, &files_.debug), std::pair(callLogVariable, &files_.calls)}) {
        if (!path->empty()) {
            environment.emplace_back(variable, std::filesystem::absolute(*path));
        }
    }
    if (files_.times) {
        environment.emplace_back(logStartVariable, std::to_string(start_));
    }
    return environment;
}

LineLog Logs::i2c() const {
    return i2c_ == nullptr ? LineLog()
                           : [file = i2c_.get()](const std::string& line) { file->write(line); };
}

LineLog Logs::bus() const {
    return bus_ == nullptr ? LineLog()
                           : [file = bus_.get()](const std::string& line) { file->write(line); };
}

std::vector<std::string> Logs::losses(const std::string& image) const {
    const auto board = ImageReader::map(image.c_str());
    const auto libraryError = [&](LibraryLog log) { return board ? board->logError(log) : 0; };
    const auto ownError = [](const auto& file) { return file == nullptr ? 0 : file->error(); };

    std::vector<std::string> losses;
    std::set<std::string> told;
    for (const auto& [path, error] :
         {std::pair(files_.debug, libraryError(LibraryLog::debug)),
          std::pair(files_.calls, libraryError(LibraryLog::calls)),
          std::pair(files_.i2c, ownError(i2c_)), std::pair(files_.bus, ownError(bus_))}) {
        if (error != 0 && !path.empty() && told.insert(path).second) {
            losses.push_back(path + ": " + std::generic_category().message(error) +
                             "; this log has lost lines");
        }
    }
    return losses;
}

} // namespace standin
