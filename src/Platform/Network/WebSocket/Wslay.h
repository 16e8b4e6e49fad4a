#pragma once

#include <wslay/wslay.h>

#include "Platform/System/LazyLibrary.h"

namespace nomely {

// wslay's functions, looked up in the library once.
class Wslay {
 private:
  LazyLibrary library_{"libwslay.so.1"};

 public:
  // The process's one. Throws LazyLibrary::MissingError. Safe on any thread.
  [[nodiscard]] static const Wslay& loaded();

#define NOMELY_WSLAY(name) decltype(::name)* const name = library_.function<decltype(::name)>(#name)
  NOMELY_WSLAY(wslay_event_context_client_init);
  NOMELY_WSLAY(wslay_event_context_free);
  NOMELY_WSLAY(wslay_event_config_set_max_recv_msg_length);
  NOMELY_WSLAY(wslay_event_config_set_no_buffering);
  NOMELY_WSLAY(wslay_event_recv);
  NOMELY_WSLAY(wslay_event_send);
  NOMELY_WSLAY(wslay_event_queue_msg);
  NOMELY_WSLAY(wslay_event_queue_close);
  NOMELY_WSLAY(wslay_event_shutdown_read);
  NOMELY_WSLAY(wslay_event_set_error);
  NOMELY_WSLAY(wslay_event_want_write);
  NOMELY_WSLAY(wslay_event_get_read_enabled);
  NOMELY_WSLAY(wslay_event_get_close_received);
  NOMELY_WSLAY(wslay_event_get_queued_msg_count);
#undef NOMELY_WSLAY

 private:
  Wslay() = default;
};

}  // namespace nomely
