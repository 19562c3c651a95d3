#include "standin/service/value_message.h"

#include "board/bus_value.h"

#include <string>

namespace standin {

namespace {

class IntoMessage final : public board::ValueSink {
public:
    explicit IntoMessage(sd_bus_message* message) : message_(message) {}

    int basic(char code, const void* value) override {
        return sd_bus_message_append_basic(message_, code, value);
    }
    int open(char kind, std::string_view contents) override {
        return sd_bus_message_open_container(message_, kind, std::string(contents).c_str());
    }
    int close() override { return sd_bus_message_close_container(message_); }

private:
    sd_bus_message* message_;
};

} // namespace

int appendValue(sd_bus_message* message, std::string_view signature, const board::Value& value) {
    IntoMessage sink(message);
    return board::putValue(signature, value, sink);
}

} // namespace standin
