// The interface of the real library as far as the tool uses it, declared only. The tool must
// compile against it; nothing is linked.
#pragma once

#include <exception>

namespace sdbusplus::exception {

class SdBusError final : public std::exception {
public:
    SdBusError(const SdBusError&) = delete;
    SdBusError& operator=(const SdBusError&) = delete;
    SdBusError(SdBusError&&) noexcept;
    SdBusError& operator=(SdBusError&&) noexcept;
    ~SdBusError() override;

    [[nodiscard]] const char* what() const noexcept override;
};

} // namespace sdbusplus::exception
