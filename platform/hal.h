// The platform's HAL library: CPLD registers and areas by name.
//
// The library is C++. None of its calls throws for a reason of its own; growing the caller's
// vectors may throw the standard allocation errors.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Reads a register, a bit field or a whole area by its symbolic name.
///
/// @param name   register name, for example PICPWR_7_DSTAT.
/// @param value  receives the bytes: one for a register or a bit field (already shifted down to bit
///               0), two for a 16-bit register (low byte first), all of them for an area. The
///               caller empties it first. Its content is unspecified after a failure.
/// @param size   receives the number of bytes delivered; the caller sets it to 0 first.
/// @return 0, or non-zero on any failure, a name that the platform does not know included.
std::int32_t ReadIO_Str(std::string name, std::vector<std::uint8_t>& value, std::uint32_t* size);

/// A configured object of the HAL: something that can be read in bulk.
///
/// Objects come from HAL_cfgdata::ReadHALConfig and belong to whoever asked for them.
class HAL_cfgbase {
public:
    HAL_cfgbase() = default;
    HAL_cfgbase(const HAL_cfgbase&) = delete;
    HAL_cfgbase& operator=(const HAL_cfgbase&) = delete;
    virtual ~HAL_cfgbase() = default;

    /// Replaces the content of @p buffer by @p length bytes from byte @p offset of the object on.
    /// @return 0, or non-zero on failure; the buffer's content is then unspecified.
    virtual std::int32_t ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                                std::uint32_t offset) = 0;

    /// True while an interrupt callback is registered on the object. Such an object must not be
    /// destroyed before UnregisterInterruptCallback() was called.
    [[nodiscard]] virtual bool IsInterruptCallbackRegistered() const = 0;

    /// Takes the interrupt callback back. @return 0, or a status that is of interest to a log only.
    virtual std::int32_t UnregisterInterruptCallback() = 0;

    /// The name of the object's own configuration entry.
    [[nodiscard]] virtual const std::string& Name() const = 0;
};

/// The kind of object that stands for an area behind an I2C-attached CPLD.
class HAL_i2c : public HAL_cfgbase {};

/// A handle on the HAL object of one configuration name.
///
/// ReadHALConfig is the library's. The other members are the client's side of the contract: the
/// program that uses the handle brings their definition (here cpld/hal_cfgdata.cpp).
class HAL_cfgdata {
public:
    /// Looks a configuration name up, for example PICPWR_PAYLOADS.
    /// @return a new object that the caller owns and deletes, or null when there is none. The
    ///         library may need a second ask: the first one can find its configuration still
    ///         loading.
    static HAL_cfgbase* ReadHALConfig(std::string name);

    /// Only keeps the name; the library is asked when the handle is first read.
    explicit HAL_cfgdata(std::string name);

    HAL_cfgdata(const HAL_cfgdata&) = delete;
    HAL_cfgdata& operator=(const HAL_cfgdata&) = delete;

    /// Releases the object, as Release() does. An exception on the way is swallowed: it would end
    /// the program.
    ~HAL_cfgdata();

    /// Bulk read through the object, which is asked for up to twice.
    /// @return the object's status, or -1 (and a line in the debug log) when there is no object.
    std::int32_t ReadIO(std::vector<std::uint8_t>& buffer, std::uint32_t length,
                        std::uint32_t offset);

    /// Takes a registered interrupt callback back, then destroys the object. Both are logged. An
    /// exception of the object passes through once the object is destroyed.
    void Release();

private:
    std::string name_;
    HAL_cfgbase* halData_ = nullptr;
    std::string objectName_; ///< the object's own name, for the log behind its end
};
