// Reads replies of any contents, which sd-bus builds, as the service's properties and objects, and
// prints the four reports of the properties. A reply of the right signature must be read, with the
// value of every property. A reply of another signature may end only in an exception of sdbusplus.
#include "bus/back_plane_payload_printer.h"
#include "bus/cem_v3_payload_printer.h"
#include "bus/property_value.h"
#include "bus/puck_payload_printer.h"
#include "bus/rfc_payload_printer.h"
#include "tests/fuzz/bus_reply.h"
#include "tests/fuzz/target.h"

#include <sdbusplus/message.hpp>

namespace {

using zolt::fuzz::Reply;
using zolt::fuzz::require;

template <typename Printer>
void print(const zolt::PropertyMap& properties) {
    try {
        Printer(properties).print();
    } catch (const std::bad_variant_access&) {
        // a property of another type than the report demands
    }
}

void readProperties(Reply& reply) {
    const zolt::PropertyMap expected = reply.addProperties();
    sdbusplus::message_t message = reply.finished();
    zolt::PropertyMap properties;
    message.read(properties);
    require(properties == expected);
    print<zolt::CEMV3PayloadPrinter>(properties);
    print<zolt::BackPlanePayloadPrinter>(properties);
    print<zolt::RFCPayloadPrinter>(properties);
    print<zolt::PuckPayloadPrinter>(properties);
}

void readObjects(Reply& reply) {
    reply.addValue("a{oa{sa{sv}}}");
    sdbusplus::message_t message = reply.finished();
    zolt::ManagedObjects objects;
    message.read(objects);
}

template <typename Contents>
void tryToRead(sd_bus_message* raw) {
    require(sd_bus_message_rewind(raw, 1) >= 0);
    try {
        Contents contents;
        sdbusplus::message_t(raw).read(contents);
    } catch (const sdbusplus::exception::SdBusError&) {
        // a reply of another signature
    }
}

void readAnything(Reply& reply) {
    reply.addAnything();
    sdbusplus::message_t message = reply.finished();
    tryToRead<zolt::PropertyMap>(message.get());
    tryToRead<zolt::PropertyValue>(message.get());
    tryToRead<zolt::ManagedObjects>(message.get());
    tryToRead<zolt::ManagedObjectValue>(message.get());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zolt::fuzz::Bytes bytes(data, size);
    const std::uint8_t kind = bytes.take();
    Reply reply(bytes);
    switch (kind % 3) {
    case 0:
        readProperties(reply);
        break;
    case 1:
        readObjects(reply);
        break;
    default:
        readAnything(reply);
        break;
    }
    return 0;
}
