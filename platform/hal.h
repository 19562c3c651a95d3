// The platform's HAL library: reads CPLD registers and areas by name.
//
// The library is C++. Its calls throw only the standard allocation errors.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Reads a register, a bit field or a whole area by its symbolic name.
///
/// @param name   register name, for example PICPWR_7_DSTAT.
/// @param value  receives the bytes: one for a register or a bit field (already shifted down to bit
///               0), two for a 16-bit register (low byte first), all bytes for an area. The caller
///               empties it first. A failure leaves its content unspecified.
/// @param size   receives the number of bytes delivered; the caller sets it to 0 first.
/// @return 0; non-zero on any failure, also for a name that the platform does not know.
std::int32_t ReadIO_Str(std::string name, std::vector<std::uint8_t>& value, std::uint32_t* size);

/// A configured object of the HAL, for reads in bulk.
///
/// HAL_cfgdata::ReadHALConfig creates the objects; its caller owns them.
class HAL_cfgbase {
public:
    HAL_cfgbase() = default;
    HAL_cfgbase(const HAL_cfgbase&) = delete;
    HAL_cfgbase& operator=(const HAL_cfgbase&) = delete;
    virtual ~HAL_cfgbase() = default;

    /// Replaces the content of @p buffer with @p length bytes of the object, from byte @p offset
    /// on.
    /// @return 0; non-zero on failure, which leaves the buffer's content unspecified.
    virtual std::int32_t ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                                std::uint32_t offset) = 0;

    /// True while an interrupt callback is registered on the object. The owner must then call
    /// UnregisterInterruptCallback() before it destroys the object.
    [[nodiscard]] virtual bool IsInterruptCallbackRegistered() const = 0;

    /// Removes the interrupt callback. @return 0, or a status that callers may log.
    virtual std::int32_t UnregisterInterruptCallback() = 0;

    /// The name of the object's own configuration entry.
    [[nodiscard]] virtual const std::string& Name() const = 0;
};

/// An object that represents an area behind an I2C-attached CPLD.
class HAL_i2c : public HAL_cfgbase {};

/// A handle on the HAL object of one configuration name.
///
/// The library defines ReadHALConfig. The program that uses the handle defines the other members
/// (here cpld/hal_cfgdata.cpp).
class HAL_cfgdata {
public:
    /// Looks up a configuration name, for example PICPWR_PAYLOADS.
    /// @return a new object that the caller owns and deletes, or null when there is none. The
    ///         library may still be loading its configuration at the first call; a second call may
    ///         then succeed.
    static HAL_cfgbase* ReadHALConfig(std::string name);

    /// Only keeps the name. The first read asks the library for the object.
    explicit HAL_cfgdata(std::string name);

    HAL_cfgdata(const HAL_cfgdata&) = delete;
    HAL_cfgdata& operator=(const HAL_cfgdata&) = delete;

    /// Releases the object as Release() does. Swallows a std::exception, which would otherwise end
    /// the program.
    ~HAL_cfgdata();

    /// Reads in bulk through the object. Without an object yet, asks the library for it, up to
    /// twice.
    /// @return the object's status; -1, with a line in the debug log, when there is no object.
    std::int32_t ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                        std::uint32_t offset);

    /// Removes a registered interrupt callback, then destroys the object. Logs both steps. An
    /// exception of the object passes through after the object's destruction.
    void Release();

private:
    std::string name_;
    HAL_cfgbase* halData_ = nullptr;
    std::string objectName_; ///< the object's own name, to log its destruction
};
