// What differs between the client frameworks of handsets: the records that both sides use, and when the
// framework calls back. Where a handset has them otherwise, this is the one place to change.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

extern "C" {

struct qmi_client_struct;
/// A connected client, or a notifier; released with qmi_client_release.
using qmi_client_type = qmi_client_struct*;

/// One published instance of a service, as qmi_client_get_service_list fills it in. The framework steps
/// through an array of them by the size of its own record, and the process looks at no entry but the first.
/// So as many of these as instances were counted have room for the framework's, as long as its record is no
/// larger than this one, which is several times the size that an address and a version take. A count that is
/// too high costs address space that nobody writes to; one whose array cannot be had is a failure.
struct qmi_service_info {
  uint32_t words[64];
};
static_assert(sizeof(qmi_service_info) == 256);

/// What a notifier sets when an instance of its service is published. The framework prepares it in
/// qmi_client_notifier_init, and later sets `sig_set` and signals `cond` under `mutex`. The process waits on
/// `cond` with a deadline of the wall clock, the one that a condition without attributes goes by.
struct QmiSignal {
  int32_t sig_set;    // non-zero once the framework has signalled; never cleared
  int32_t timed_out;  // written by the waiting side only
  pthread_cond_t cond;
  pthread_mutex_t mutex;
  uint64_t unread[8];  // room for what a framework keeps behind these
};
static_assert(offsetof(QmiSignal, sig_set) == 0 && offsetof(QmiSignal, timed_out) == 4);
static_assert(offsetof(QmiSignal, cond) == 8);
static_assert(offsetof(QmiSignal, mutex) == 8 + sizeof(pthread_cond_t));

/// Called on a thread of the framework, one indication at a time per client. The first call may come before
/// qmi_client_init has returned and before it has stored the handle. `user_handle` is the client's own from
/// the first call on, good for decoding; the process's own copy of the handle is not there yet. As
/// qmi_client_init may wait for the call to end, the call must not wait for it; a thread that the call starts
/// may.
using qmi_client_ind_cb = void (*)(qmi_client_type user_handle, uint32_t msg_id, const uint8_t* ind_buf,
                                   uint32_t ind_buf_len, void* ind_cb_data);
}
