// The logs of a run: their files, and whether they got all their lines.
#pragma once

#include "standin/launcher/command.h"
#include "standin/log/log_line.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace standin {

/// The files that get logs; an empty name means no log. One file can get several logs.
struct LogFiles {
    std::string debug;  ///< the platform's debug log
    std::string calls;  ///< calls of the platform's libraries
    std::string i2c;    ///< transactions on the I2C buses
    std::string bus;    ///< calls of the service
    bool times = false; ///< each line starts with the time since zolt_sim's start
};

class Logs {
public:
    /// Empties the files, or creates them with the caller's umask. They stay open until the end of
    /// this object, so that the reader of a named pipe gets everything.
    /// @param start  of zolt_sim, in the form of monotonicTime()
    /// @throw std::system_error when a file cannot be opened
    Logs(LogFiles files, std::int64_t start);
    Logs(const Logs&) = delete;
    Logs& operator=(const Logs&) = delete;
    ~Logs();

    /// The environment variables that name the logs of the platform's libraries.
    [[nodiscard]] Environment environment() const;

    /// Functions that write the logs of this process; empty without a log. This object must outlive
    /// them.
    [[nodiscard]] LineLog i2c() const;
    [[nodiscard]] LineLog bus() const;

    /// Says which logs have lost lines and why: one text for each file.
    /// @param image  path of the board's image, in which the libraries note their errors
    [[nodiscard]] std::vector<std::string> losses(const std::string& image) const;

private:
    class File;

    [[nodiscard]] std::unique_ptr<File> open(const std::string& path) const;

    LogFiles files_;
    std::int64_t start_;
    std::unique_ptr<File> debug_;
    std::unique_ptr<File> calls_;
    std::unique_ptr<File> i2c_;
    std::unique_ptr<File> bus_;
};

} // namespace standin
