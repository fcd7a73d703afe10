// Requests and their CMPIResult.
#include "host/request.h"

namespace cmpihost {

namespace detail {
namespace {

struct ResultState : Object<CMPIResult, CMPIResultFT> {
    explicit ResultState(Request::Impl &request);
    static const CMPIResultFT *table();
    static ResultState *fromHdl(void *hdl) { return stateFromHdl<ResultState>(hdl); }
    Request::Impl *owner;
};

// An object the request can keep by pointer: one of its own, or one of the
// process arena (which outlives it). Anything else is copied in, so that a
// delivery never outlives what it points at.
bool outlivesDelivery(const Request::Impl &request, const void *object) {
    Arena *arena = arenaOf(object);
    return arena == &request.arena || arena == &processArena();
}

CMPIStatus record(Request::Impl &request, Delivery delivery) {
    delivery.doneBefore = request.done;
    request.deliveries.push_back(delivery);
    return makeStatus(CMPI_RC_OK);
}

// chars stay chars (a copy owned by the request), as the provider typed them;
// every other value is stored as an object stores it.
CMPIStatus resultReturnData(const CMPIResult *rslt, const CMPIValue *value, CMPIType type) {
    auto *state = stateOf<ResultState>(rslt);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    Request::Impl &request = *state->owner;
    return guardStatus([&] {
        Delivery delivery{Delivery::Kind::Data};
        if (type == CMPI_chars) {
            delivery.data = nullData(CMPI_chars);
            if (value != nullptr) {
                auto *copy = makeString(request.arena, reinterpret_cast<const char *>(value));
                delivery.data.state = CMPI_goodValue;
                delivery.data.value.chars = static_cast<char *>(copy->hdl);
            }
        } else {
            CMPIrc rc = storeValue(request.arena, value, type, &delivery.data);
            if (rc != CMPI_RC_OK) return makeStatus(rc);
        }
        return record(request, delivery);
    });
}

CMPIStatus resultReturnInstance(const CMPIResult *rslt, const CMPIInstance *inst) {
    auto *state = stateOf<ResultState>(rslt);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    if (stateOf<InstanceState>(inst) == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    Request::Impl &request = *state->owner;
    return guardStatus([&] {
        Delivery delivery{Delivery::Kind::Instance};
        delivery.instance =
            outlivesDelivery(request, inst) ? inst : cloneInstance(request.arena, inst);
        return record(request, delivery);
    });
}

CMPIStatus resultReturnObjectPath(const CMPIResult *rslt, const CMPIObjectPath *op) {
    auto *state = stateOf<ResultState>(rslt);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    if (stateOf<PathState>(op) == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    Request::Impl &request = *state->owner;
    return guardStatus([&] {
        Delivery delivery{Delivery::Kind::ObjectPath};
        delivery.path = outlivesDelivery(request, op) ? op : clonePath(request.arena, op);
        return record(request, delivery);
    });
}

CMPIStatus resultReturnDone(const CMPIResult *rslt) {
    auto *state = stateOf<ResultState>(rslt);
    if (state == nullptr) return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    ++state->owner->done;
    return makeStatus(CMPI_RC_OK);
}

// A result is the request's own: it cannot be duplicated.
CMPIResult *resultClone(const CMPIResult *rslt, CMPIStatus *rc) {
    setStatus(rc,
              stateOf<ResultState>(rslt) ? CMPI_RC_ERR_NOT_SUPPORTED : CMPI_RC_ERR_INVALID_HANDLE);
    return nullptr;
}

constexpr CMPIResultFT kResultTable = {
    CMPICurrentVersion,   releaseSlot<ResultState>, resultClone,      resultReturnData,
    resultReturnInstance, resultReturnObjectPath,   resultReturnDone,
};

ResultState::ResultState(Request::Impl &request) : Object(&kResultTable), owner(&request) {}
const CMPIResultFT *ResultState::table() {
    return &kResultTable;
}

}  // namespace

const void *resultTable() {
    return &kResultTable;
}
Arena *resultArena(const void *object) {
    auto *state = stateOf<ResultState>(static_cast<const CMPIResult *>(object));
    return state ? state->arena : nullptr;
}

CMPIResult *makeResult(Request::Impl &request) {
    return request.arena.make<ResultState>(request)->cmpi();
}

}  // namespace detail

Request::Request() : impl_(std::make_unique<Impl>()) {
    impl_->result = detail::makeResult(*impl_);
    impl_->context = detail::makeContext(impl_->arena);
    impl_->previous = detail::exchangeCurrent(&impl_->arena);
}

// Requests nest: the one that was current before this one is current again.
// If this request is not the current one (it was made on another thread, or
// a later request is still alive), the current arena is left alone.
Request::~Request() {
    if (detail::explicitCurrent() == &impl_->arena) detail::exchangeCurrent(impl_->previous);
}

const CMPIResult *Request::result() {
    return impl_->result;
}
const CMPIContext *Request::context() {
    return impl_->context;
}

CMPIObjectPath *Request::newObjectPath(const std::string &ns, const std::string &cls) {
    return detail::makePath(impl_->arena, ns, cls);
}

CMPIArgs *Request::newArgs() {
    return detail::makeArgs(impl_->arena);
}

const std::vector<Delivery> &Request::deliveries() const {
    return impl_->deliveries;
}
int Request::doneCount() const {
    return impl_->done;
}
std::size_t Request::objectCount() const {
    return impl_->arena.size();
}
Request::Impl &Request::impl() {
    return *impl_;
}

std::string returnedText(const Request &request) {
    std::string text;
    for (const Delivery &d : request.deliveries()) {
        if (d.kind == Delivery::Kind::Data &&
            (d.data.type == CMPI_chars || d.data.type == CMPI_string))
            text = dataText(d.data);
    }
    return text;
}

std::size_t liveObjectCount() {
    return detail::liveNodes();
}

}  // namespace cmpihost
