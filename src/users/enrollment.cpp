// Enrolment (1, 15), identification (6, 16) and verification (3, 4, 5). All travel
// as get requests.
#include <cstring>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"
#include "users/user_record.h"

static_assert(offsetof(kvn_verify_user_record_request, record) == offsetof(kvn_user_store_request, record),
              "verification by record starts as a store request does");

namespace kvn {
namespace {

using namespace row;

// Enrolment answers and identification requests are that large.
constexpr uint32_t kEnrollmentBuffer = 512000;
constexpr uint32_t kIdentifyBuffer = 204800;

#define ENROL(m) KVN_MEMBER(kvn_enrollment_request, m)
#define IDENT(m) KVN_MEMBER(kvn_identify_request, m)
#define VERIFY(m) KVN_MEMBER(kvn_verify_result, m)

// The whole value into the caller's buffer the member points at; a null pointer
// skips it. The value is shorter than the answer buffer, which the caller's buffer
// holds (KVN_ENROLLMENT_DATA_SIZE).
int32_t into_caller_buffer(uint8_t* member, const uint8_t* v, uint32_t n) noexcept {
    uint8_t* to = nullptr;
    std::memcpy(&to, member, sizeof to);
    if (to != nullptr) std::memcpy(to, v, n < kEnrollmentBuffer ? n : kEnrollmentBuffer);
    return 0;
}

constexpr Field kEnrolSent[] = {text(1, ENROL(user_id)), u8(9, ENROL(attr_t09))};
// Command 1 reads the first seven rows, command 15 all of them.
constexpr Field kEnrolAnswer[] = {
    u32(2, ENROL(attr_t02)), custom(3, ENROL(data_t03), into_caller_buffer), u32(4, ENROL(attr_t04)),
    u32(5, ENROL(attr_t05)), custom(6, ENROL(data_t06), into_caller_buffer), u8(7, ENROL(attr_t07)),
    u8(8, ENROL(attr_t08)),  text(10, ENROL(text_t10)),                       u8(11, ENROL(attr_t11)),
};
constexpr Desc kEnrolOnly = Desc(kEnrolAnswer).first(7);

// The template and the sample are sent from the caller's record, not copied.
constexpr Field kIdentifySent[] = {
    counted(1, IDENT(template_data), IDENT(template_length)).by_ref().nonzero(),
    counted(2, IDENT(sample_data), IDENT(sample_length)).by_ref().nonzero(),
};
constexpr Field kIdentified[] = {text(2, IDENT(user_id)), u8(3, IDENT(attr_t03)), u32(1, IDENT(attr_t01))};

constexpr Field kVerified[] = {u32(1, VERIFY(attr_t01)), u32(2, VERIFY(attr_t02))};
constexpr Field kVerifyUserId[] = {text(1, KVN_MEMBER(kvn_verify_user_id_request, user_id))};

#undef ENROL
#undef IDENT
#undef VERIFY

int32_t enrol(kvn_device_conn* conn, uint32_t command, Desc answer, kvn_enrollment_request* request) noexcept {
    return cmd::query<kEnrollmentBuffer>(conn, Request{command, KVN_REQ_GET}, kEnrolSent, request, answer, request);
}

// Every verification reads its answer into the request's result.
template <class Encoder>
int32_t verify(kvn_device_conn* conn, uint32_t command, Encoder&& encoder, kvn_verify_result* result) noexcept {
    return call<cmd::kSettingsBuffer>(conn, Request{command, KVN_REQ_GET}, encoder, Decode{kVerified, result});
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_enrollment(kvn_device_conn* conn, kvn_enrollment_request* request) {
    return enrol(conn, id::enrollment, kEnrolOnly, request);
}

KVN_API int32_t kvn_enrollment_with_duplicate_identify(kvn_device_conn* conn, kvn_enrollment_request* request) {
    return enrol(conn, id::enrollment_with_duplicate_check, kEnrolAnswer, request);
}

KVN_API int32_t kvn_identify_user(kvn_device_conn* conn, kvn_identify_request* request) {
    return cmd::get(conn, id::identify_user, kIdentified, request);
}

KVN_API int32_t kvn_identify_user_with_biometric_template(kvn_device_conn* conn, kvn_identify_request* request) {
    return cmd::query<kIdentifyBuffer>(conn, Request{id::identify_with_template, KVN_REQ_GET}, kIdentifySent, request,
                                       kIdentified, request);
}

KVN_API int32_t kvn_verify_by_template(kvn_device_conn* conn, kvn_verify_template_request* request) {
    if (request == nullptr || (request->template_data == nullptr && request->template_length != 0))
        return KVN_E_TLV_BUFFER_OVERFLOW;
    return verify(conn, id::verify_by_template, [&](tlv::Writer& w) {
        w.u8(1, request->attr_t01);
        w.u32(2, request->template_length);
        w.element_ref(3, request->template_data, request->template_length);
    }, &request->result);
}

KVN_API int32_t kvn_verify_by_user_id(kvn_device_conn* conn, kvn_verify_user_id_request* request) {
    if (request == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return verify(conn, id::verify_by_user_id, Encode{kVerifyUserId, request}, &request->result);
}

KVN_API int32_t kvn_verify_by_user_record(kvn_device_conn* conn, kvn_verify_user_record_request* request) {
    if (request == nullptr || request->record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return verify(conn, id::verify_by_user_record, Encode{users::kRecord, request->record}, &request->result);
}

}  // extern "C"
