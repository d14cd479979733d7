// Zq::Ptr: shared ownership of an object that counts its owners through the host.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "host/object/RefCounts.h"
#include "host/object/iObject.h"

namespace Zq {

// How an object ends when its last owner is gone.
struct DtorTraits {
    static void destroy(InternalRefCount* counted) noexcept { delete counted; }
};

// Where the count of an object is found.
struct InternalRefCountTraits {
    template <class T>
    [[nodiscard]] static InternalRefCount* counter(T* object) noexcept {
        return const_cast<std::remove_const_t<T>*>(object);
    }
};

// A pointer to From is a pointer to To.
template <class From, class To>
concept PointsAs = std::is_convertible_v<From*, To*>;

// A count handle and an object pointer. Null is normal. The two usually belong to one object; with the
// aliasing constructor the pointer leads to a part of the object that is counted.
//
// Thread: any. Two threads may hold Ptrs to one object, not share one Ptr.
template <class T, class Destroy = DtorTraits, class Count = InternalRefCountTraits>
class Ptr {
public:
    using element_type = T;

    Ptr() noexcept = default;
    Ptr(std::nullptr_t) noexcept {}
    explicit Ptr(T* object) noexcept
        : counter_(object != nullptr ? Count::counter(object) : nullptr), object_(object) {
        acquire();
    }
    // Shares what `owner` owns and points at `part`, which lives as long as the owned object does.
    template <class U>
    Ptr(Ptr<U, Destroy, Count> const& owner, T* part) noexcept : counter_(owner.counter_), object_(part) {
        acquire();
    }
    Ptr(Ptr const& other) noexcept : counter_(other.counter_), object_(other.object_) { acquire(); }
    Ptr(Ptr&& other) noexcept
        : counter_(std::exchange(other.counter_, nullptr)), object_(std::exchange(other.object_, nullptr)) {}
    template <PointsAs<T> U>
    Ptr(Ptr<U, Destroy, Count> const& other) noexcept : counter_(other.counter_), object_(other.object_) {
        acquire();
    }
    template <PointsAs<T> U>
    Ptr(Ptr<U, Destroy, Count>&& other) noexcept
        : counter_(std::exchange(other.counter_, nullptr)), object_(std::exchange(other.object_, nullptr)) {}
    ~Ptr() { release(); }

    Ptr& operator=(Ptr other) noexcept {
        swap(other);
        return *this;
    }
    void swap(Ptr& other) noexcept {
        std::swap(counter_, other.counter_);
        std::swap(object_, other.object_);
    }
    void reset() noexcept { Ptr().swap(*this); }

    [[nodiscard]] T* get() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    template <class U>
    [[nodiscard]] bool operator==(Ptr<U, Destroy, Count> const& other) const noexcept {
        return object_ == other.get();
    }
    [[nodiscard]] bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }

private:
    template <class U, class D, class C>
    friend class Ptr;

    void acquire() noexcept {
        if (counter_ != nullptr) {
            addReference(counter_->refCount());
        }
    }
    void release() noexcept {
        if (counter_ != nullptr && releaseReference(counter_->refCount()) == 0) {
            Destroy::destroy(counter_);
        }
    }

    InternalRefCount* counter_ = nullptr;
    T* object_ = nullptr;
};

// A shared object made with the host's memory; null when there is none.
template <class T, class... Arguments>
[[nodiscard]] Ptr<T> makeShared(Arguments&&... arguments) {
    return Ptr<T>(new T(std::forward<Arguments>(arguments)...));
}

// The same object as another type, null when it is not of that type.
template <class T, class U>
[[nodiscard]] Ptr<T> dynamicCast(Ptr<U> const& other) noexcept {
    T* const object = dynamic_cast<T*>(other.get());
    return object != nullptr ? Ptr<T>(other, object) : Ptr<T>();
}

} // namespace Zq
