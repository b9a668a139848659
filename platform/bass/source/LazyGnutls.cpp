// Forwards FFmpeg's calls to GnuTLS, which is loaded by the first of them: linking it and the libraries it
// needs would delay the first window. A function that is missing here would be linked.

#include "platform/bass/LoadedLibrary.h"

#include <gnutls/gnutls.h>
#include <gnutls/x509.h>

#include <mutex>
#include <type_traits>

namespace {

using bass::LoadedLibrary;

class Gnutls {
public:
    template <typename Call> Call find(const char* name) {
        const std::lock_guard lock(m_mutex);
        Call call = nullptr;
        m_library.find(name, call);
        return call;
    }

private:
    std::mutex m_mutex;
    LoadedLibrary m_library{TUL_GNUTLS_LIBRARY};
};

Gnutls& gnutls() {
    static Gnutls library;
    return library;
}

/// The result of each call when the library cannot be loaded.
template <typename Result> Result failed() {
    if constexpr (std::is_integral_v<Result>) return GNUTLS_E_UNIMPLEMENTED_FEATURE;
    if constexpr (!std::is_integral_v<Result>) return Result();
}

} // namespace

// NOLINTBEGIN(bugprone-macro-parentheses): parameters and arguments come in parentheses of their own
#define FORWARD(result, name, parameters, arguments)                                                         \
    extern "C" result name parameters {                                                                      \
        static const auto call = gnutls().find<decltype(&name)>(#name);                                      \
        return call ? call arguments : failed<result>();                                                     \
    }
// NOLINTEND(bugprone-macro-parentheses)

using Session = gnutls_session_t;
using Credentials = gnutls_certificate_credentials_t;
using Certificate = gnutls_x509_crt_t;
using Format = gnutls_x509_crt_fmt_t;
using Datum = const gnutls_datum_t*;
using Text = const char*;

FORWARD(int, gnutls_global_init, (), ())
FORWARD(void, gnutls_global_deinit, (), ())
FORWARD(int, gnutls_init, (Session * session, unsigned flags), (session, flags))
FORWARD(void, gnutls_deinit, (Session session), (session))
FORWARD(int, gnutls_set_default_priority, (Session session), (session))
FORWARD(int, gnutls_credentials_set, (Session session, gnutls_credentials_type_t type, void* credentials),
        (session, type, credentials))
FORWARD(int, gnutls_server_name_set,
        (Session session, gnutls_server_name_type_t type, const void* name, size_t length),
        (session, type, name, length))
FORWARD(void, gnutls_transport_set_ptr, (Session session, gnutls_transport_ptr_t pointer), (session, pointer))
FORWARD(void, gnutls_transport_set_pull_function, (Session session, gnutls_pull_func pull), (session, pull))
FORWARD(void, gnutls_transport_set_push_function, (Session session, gnutls_push_func push), (session, push))
FORWARD(int, gnutls_handshake, (Session session), (session))
FORWARD(int, gnutls_bye, (Session session, gnutls_close_request_t how), (session, how))
FORWARD(ssize_t, gnutls_record_recv, (Session session, void* data, size_t size), (session, data, size))
FORWARD(ssize_t, gnutls_record_send, (Session session, const void* data, size_t size), (session, data, size))
FORWARD(int, gnutls_error_is_fatal, (int error), (error))
FORWARD(Text, gnutls_strerror, (int error), (error))
FORWARD(int, gnutls_certificate_allocate_credentials, (Credentials * made), (made))
FORWARD(void, gnutls_certificate_free_credentials, (Credentials credentials), (credentials))
FORWARD(Datum, gnutls_certificate_get_peers, (Session session, unsigned* count), (session, count))
FORWARD(void, gnutls_certificate_set_verify_flags, (Credentials credentials, unsigned flags),
        (credentials, flags))
FORWARD(int, gnutls_certificate_set_x509_key_file,
        (Credentials credentials, Text certificate, Text key, Format format),
        (credentials, certificate, key, format))
FORWARD(int, gnutls_certificate_set_x509_system_trust, (Credentials credentials), (credentials))
FORWARD(int, gnutls_certificate_set_x509_trust_file, (Credentials credentials, Text file, Format format),
        (credentials, file, format))
FORWARD(gnutls_certificate_type_t, gnutls_certificate_type_get, (Session session), (session))
FORWARD(int, gnutls_certificate_verify_peers2, (Session session, unsigned* status), (session, status))
FORWARD(unsigned, gnutls_x509_crt_check_hostname, (Certificate certificate, Text name), (certificate, name))
FORWARD(void, gnutls_x509_crt_deinit, (Certificate certificate), (certificate))
FORWARD(int, gnutls_x509_crt_import, (Certificate certificate, Datum data, Format format),
        (certificate, data, format))
FORWARD(int, gnutls_x509_crt_init, (Certificate * made), (made))
