/* In libsystemd's place: a library whose every function aborts. A tool that runs with it has called
 * nothing of libsystemd. A function that the tool knows and this library lacks shows when all of
 * them are bound at the start. */
#include <stdlib.h>

#define UNTOUCHABLE(function)                                                                      \
    void function(void);                                                                           \
    void function(void) {                                                                          \
        abort();                                                                                   \
    }

UNTOUCHABLE(sd_bus_call)
UNTOUCHABLE(sd_bus_default_system)
UNTOUCHABLE(sd_bus_error_free)
UNTOUCHABLE(sd_bus_error_is_set)
UNTOUCHABLE(sd_bus_error_set_errno)
UNTOUCHABLE(sd_bus_flush_close_unref)
UNTOUCHABLE(sd_bus_message_append_basic)
UNTOUCHABLE(sd_bus_message_at_end)
UNTOUCHABLE(sd_bus_message_enter_container)
UNTOUCHABLE(sd_bus_message_exit_container)
UNTOUCHABLE(sd_bus_message_is_method_error)
UNTOUCHABLE(sd_bus_message_new_method_call)
UNTOUCHABLE(sd_bus_message_peek_type)
UNTOUCHABLE(sd_bus_message_read_basic)
UNTOUCHABLE(sd_bus_message_ref)
UNTOUCHABLE(sd_bus_message_skip)
UNTOUCHABLE(sd_bus_message_unref)
UNTOUCHABLE(sd_bus_message_verify_type)
