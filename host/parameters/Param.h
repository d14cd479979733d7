// A parameter whose value is of type T: bool or an unsigned integer.
#pragma once

#include "host/parameters/ParamBase.h"

namespace GenericParam {

template <class T>
class Param : public ParamBase {
public:
    [[nodiscard]] T getValue() const;
    // As setValueFromString, for the value itself.
    [[nodiscard]] bool setValue(T value);

    [[nodiscard]] WideString getValueAsString() const override;
    [[nodiscard]] bool setValueFromString(WideString const& text) override;
    bool reset() override;
    [[nodiscard]] Zq::Ptr<ValServerBase> getValueServer() const override { return server_; }
    [[nodiscard]] std::optional<std::int64_t> numberFromString(WideString const& text) const override;

protected:
    Param(WideString legend, NarrowString id, WideString tooltip, T initial);

    [[nodiscard]] T getInitialValue() const noexcept { return initial_; }
    // True for a value that this kind of parameter can have.
    [[nodiscard]] virtual bool isInRange(T value) const = 0;
    // What the change handlers are told of the present value.
    [[nodiscard]] virtual WideString getReportedValue() const { return getValueAsString(); }
    // Takes over value and state; nobody is called.
    void copyFrom(Param const& other);

private:
    T initial_;
    Zq::Ptr<ValServer<T>> server_;
};

extern template class ZQ_API Param<bool>;
extern template class ZQ_API Param<std::uint32_t>;

} // namespace GenericParam
