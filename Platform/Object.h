#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

// Reference-counted objects, as the host platform passes them across its boundaries. Everything that
// outlives a call or crosses to the host is an Object; our own code owns objects through `Ref` alone.
// Counting is atomic: any thread may retain and release any object.

namespace VeltoTouch {

class Object;

using CFTypeRef = const Object*;
using CFIndex = std::int64_t;

// Adds a reference and returns the object. Null is tolerated.
CFTypeRef CFRetain(CFTypeRef object) noexcept;

// Drops a reference; the last one destroys the object on the calling thread. Null is tolerated.
void CFRelease(CFTypeRef object) noexcept;

// The same two, returning the count after the call. It is read in the same step: a count read later may belong to a
// destroyed object.
CFIndex CFRetainAndCount(CFTypeRef object) noexcept;
CFIndex CFReleaseAndCount(CFTypeRef object) noexcept;

// Returns the number of references, which other threads may change: for tests and diagnostics. Null has 0.
[[nodiscard]] CFIndex CFGetRetainCount(CFTypeRef object) noexcept;

// Compares values by content and all other objects by identity. Two nulls are equal.
[[nodiscard]] bool CFEqual(CFTypeRef a, CFTypeRef b) noexcept;

// Base of every reference-counted object. An object starts with one reference, which its maker owns.
class Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

protected:
    Object() noexcept = default;
    virtual ~Object() = default;

    // Compares with an object of any class. Compares identity unless overridden.
    [[nodiscard]] virtual bool isEqual(const Object& other) const noexcept { return this == &other; }

private:
    friend CFIndex CFRetainAndCount(CFTypeRef object) noexcept;
    friend CFIndex CFReleaseAndCount(CFTypeRef object) noexcept;
    friend CFIndex CFGetRetainCount(CFTypeRef object) noexcept;
    friend bool CFEqual(CFTypeRef a, CFTypeRef b) noexcept;

    mutable std::atomic<CFIndex> _references{1};
};

// One owned reference to an object, or null: the only owner of references in our code.
template <class T>
class Ref {
public:
    constexpr Ref() noexcept = default;
    constexpr Ref(std::nullptr_t) noexcept {}
    Ref(const Ref& other) noexcept : Ref(retained(other._object)) {}
    Ref(Ref&& other) noexcept : _object(other.leak()) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(Ref<U> other)
    noexcept : _object(other.leak()) {}
    ~Ref() { CFRelease(_object); }

    Ref& operator=(Ref other) noexcept {
        std::swap(_object, other._object);
        return *this;
    }

    // Takes ownership of a reference.
    [[nodiscard]] static Ref adopt(T* object) noexcept {
        Ref ref;
        ref._object = object;
        return ref;
    }

    // Adds a reference.
    [[nodiscard]] static Ref retained(T* object) noexcept {
        CFRetain(object);
        return adopt(object);
    }

    // Releases ownership of the reference to the caller.
    [[nodiscard]] T* leak() noexcept { return std::exchange(_object, nullptr); }

    [[nodiscard]] T* get() const noexcept { return _object; }
    [[nodiscard]] T* operator->() const noexcept { return _object; }
    [[nodiscard]] T& operator*() const noexcept { return *_object; }
    [[nodiscard]] explicit operator bool() const noexcept { return _object != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a._object == b._object; }

private:
    T* _object = nullptr;
};

// Makes an object and owns its first reference.
template <class T, class... Arguments>
[[nodiscard]] Ref<T> makeRef(Arguments&&... arguments) {
    return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

} // namespace VeltoTouch
