#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>

namespace Kor {

// The intrusive, non-atomic reference count that Ptr works with: everything runs on the agent's
// one thread. When the last reference goes, the count is marked negative for the duration of the
// destructor, so that references taken and dropped while the object tears itself down neither
// delete it twice nor resurrect it, and so that reactors owned by it can tell that their owner is
// going and drop notifications. Self is the class that is deleted: a polymorphic base with a
// virtual destructor, or a final class that needs no table.
template <class Self>
class RefCounted {
 public:
   RefCounted() = default;
   // A copy is a new object: it starts without references.
   RefCounted(const RefCounted&) : references_(0) {}
   RefCounted& operator=(const RefCounted&) { return *this; }

   std::int32_t references() const { return references_; }
   bool isTornDown() const { return references_ < 0; }

   void newRef() const {
      if (references_ >= 0) {
         ++references_;
      }
   }
   void deleteRef() const {
      if (references_ > 0 && --references_ == 0) {
         references_ = kTearingDown;
         delete static_cast<const Self*>(this);
      }
   }

 protected:
   ~RefCounted() = default;

 private:
   static constexpr std::int32_t kTearingDown = std::numeric_limits<std::int32_t>::min() / 2;
   mutable std::int32_t references_ = 0;
};

// Base of every reference-counted object of the runtime.
class PtrInterface : public RefCounted<PtrInterface> {
 public:
   virtual ~PtrInterface() = default;
};

// Counted reference to a PtrInterface-derived object. Null by default.
template <class T>
class Ptr {
 public:
   using element_type = T;

   Ptr() noexcept = default;
   Ptr(std::nullptr_t) noexcept {}
   Ptr(T* p) noexcept : p_(p) { acquire(); }
   Ptr(const Ptr& o) noexcept : p_(o.p_) { acquire(); }
   Ptr(Ptr&& o) noexcept : p_(o.p_) { o.p_ = nullptr; }
   template <class U>
   Ptr(const Ptr<U>& o) noexcept : p_(o.ptr()) {
      acquire();
   }
   template <class U>
   Ptr(Ptr<U>&& o) noexcept : p_(o.release()) {}
   ~Ptr() { reset(); }

   Ptr& operator=(const Ptr& o) noexcept {
      Ptr(o).swap(*this);
      return *this;
   }
   Ptr& operator=(Ptr&& o) noexcept {
      Ptr(std::move(o)).swap(*this);
      return *this;
   }
   Ptr& operator=(std::nullptr_t) noexcept {
      reset();
      return *this;
   }

   T* ptr() const noexcept { return p_; }
   T* get() const noexcept { return p_; }
   T* operator->() const noexcept { return p_; }
   T& operator*() const noexcept { return *p_; }
   explicit operator bool() const noexcept { return p_ != nullptr; }
   bool operator!() const noexcept { return p_ == nullptr; }

   void reset() noexcept {
      if (p_) {
         T* p = p_;
         p_ = nullptr;
         p->deleteRef();
      }
   }
   // Gives up the reference without dropping the count; used by converting moves.
   T* release() noexcept {
      T* p = p_;
      p_ = nullptr;
      return p;
   }
   void swap(Ptr& o) noexcept { std::swap(p_, o.p_); }

   template <class U>
   bool operator==(const Ptr<U>& o) const noexcept {
      return p_ == o.ptr();
   }
   bool operator==(std::nullptr_t) const noexcept { return p_ == nullptr; }
   template <class U>
   bool operator<(const Ptr<U>& o) const noexcept {
      return std::less<const void*>()(p_, o.ptr());
   }

 private:
   void acquire() const noexcept {
      if (p_) {
         p_->newRef();
      }
   }
   T* p_ = nullptr;
};

template <class T, class... Args>
Ptr<T> make(Args&&... args) {
   return Ptr<T>(new T(std::forward<Args>(args)...));
}

template <class T, class U>
Ptr<T> ptrCast(const Ptr<U>& p) {
   return Ptr<T>(static_cast<T*>(p.ptr()));
}

template <class T, class U>
Ptr<T> constPtrCast(const Ptr<U>& p) {
   return Ptr<T>(const_cast<T*>(p.ptr()));
}

}  // namespace Kor

template <class T>
struct std::hash<Kor::Ptr<T>> {
   std::size_t operator()(const Kor::Ptr<T>& p) const noexcept {
      return std::hash<const void*>()(p.ptr());
   }
};
