#include "host/parameters/Param.h"

#include "host/parameters/DataConvert.h"

namespace GenericParam {

template <class T>
Param<T>::Param(WideString legend, NarrowString id, WideString tooltip, T initial)
    : ParamBase(std::move(legend), std::move(id), std::move(tooltip)), initial_(initial),
      server_(Zq::makeShared<ValServer<T>>(initial)) {}

template <class T>
T Param<T>::getValue() const {
    return server_ ? server_->getValue() : initial_;
}

template <class T>
bool Param<T>::setValue(T value) {
    if (!server_ || !isInRange(value) || !isAllowed(static_cast<std::int64_t>(value))) {
        return false;
    }
    server_->setValue(value);
    callChangeHandlers(getReportedValue());
    return true;
}

template <class T>
WideString Param<T>::getValueAsString() const {
    return DataConvert::convert(getValue());
}

template <class T>
bool Param<T>::setValueFromString(WideString const& text) {
    T value{};
    return DataConvert::convert(text, value) && setValue(value);
}

template <class T>
bool Param<T>::reset() {
    return getValue() != initial_ && setValue(initial_);
}

template <class T>
std::optional<std::int64_t> Param<T>::numberFromString(WideString const& text) const {
    T value{};
    if (!DataConvert::convert(text, value) || !isInRange(value)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(value);
}

template <class T>
void Param<T>::copyFrom(Param const& other) {
    copyState(other);
    if (server_) {
        server_->setValue(other.getValue());
    }
}

template class Param<bool>;
template class Param<std::uint32_t>;

} // namespace GenericParam
