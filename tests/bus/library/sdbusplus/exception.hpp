// The interface of the real library as far as the tool uses it: what the tool must compile against
// on a machine that has the real one. Nothing of it is ever linked.
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
