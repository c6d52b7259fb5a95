// Reference-counted objects, as the automation run time counts them: the
// last release destroys. Hosts may subclass a core class to add an automation
// interface; the count is then shared with that interface.
#pragma once

#include <cstdint>
#include <utility>

namespace ostrel {

class Object {
  public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    uint32_t addRef() noexcept { return ++refs_; }
    uint32_t release() noexcept {
        const uint32_t left = --refs_;
        if (left == 0) delete this;
        return left;
    }
    uint32_t refCount() const noexcept { return refs_; }

  private:
    uint32_t refs_ = 0;  // apartment threaded: only the owning thread counts
};

// A counted reference. Null is "Nothing".
template <class T>
class Ref {
  public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}
    explicit Ref(T* p) noexcept : p_(p) {
        if (p_) p_->addRef();
    }
    Ref(const Ref& other) noexcept : Ref(other.p_) {}
    Ref(Ref&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    template <class U>
    Ref(const Ref<U>& other) noexcept : Ref(static_cast<T*>(other.get())) {}
    ~Ref() { reset(); }

    Ref& operator=(Ref other) noexcept {
        std::swap(p_, other.p_);
        return *this;
    }

    void reset() noexcept {
        if (T* old = std::exchange(p_, nullptr)) old->release();
    }
    T* get() const noexcept { return p_; }
    T* operator->() const noexcept { return p_; }
    T& operator*() const noexcept { return *p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.p_ == b.p_; }

  private:
    T* p_ = nullptr;
};

template <class T, class... Args>
Ref<T> makeRef(Args&&... args) {
    return Ref<T>(new T(std::forward<Args>(args)...));
}

}  // namespace ostrel
