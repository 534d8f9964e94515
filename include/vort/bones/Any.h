// `VORT::any`: one value of any copyable type behind a type-erased pointer, with value
// semantics; `VORT::bad_any_cast` and `VORT::any_cast`.
//
// Every conversion of the type system and every entry of a data object carries its value in
// an `any`. A held type needs a copy constructor and `operator==`.
//
// Ownership: an `any` owns its placeholder, and copies are deep: two `any`s never share one,
// so distinct `any`s may be used on distinct threads whatever they were copied from (the held
// value may itself share data). There is no internal locking.
//
// Failure: a cast to a type other than the exact held type throws `bad_any_cast` (the pointer
// form gives null instead). There is no conversion between `int` and `double`, nor to a base.
#ifndef VORT_BONES_ANY_H
#define VORT_BONES_ANY_H

#include <vort/vort_export.h>

#include <type_traits>
#include <typeinfo>

namespace VORT {

class VORT_EXPORT any {
public:
    class VORT_EXPORT placeholder {
    public:
        virtual ~placeholder();
        // Non-zero marks a placeholder that holds no value, which a cast refuses.
        virtual int isNull() const = 0;
        virtual std::type_info const &type() const = 0;
        // A new placeholder with a copy of the value; the caller owns it.
        virtual placeholder *clone() const = 0;
        // False unless `other` holds the same type with an equal value.
        virtual bool equals(placeholder *other) const = 0;
    };

    template <typename T>
    class holder : public placeholder {
    public:
        explicit holder(T const &value) : held(value) {}

        int isNull() const override { return 0; }
        std::type_info const &type() const override { return typeid(T); }
        placeholder *clone() const override { return new holder(held); }
        bool equals(placeholder *other) const override {
            const auto *same = dynamic_cast<holder *>(other);
            return same != nullptr && held == same->held;
        }

        T held;
    };

    any() = default;
    // Not a template for `any` itself, so that copying a non-const `any` copies rather than
    // wrapping it.
    template <typename T, typename = std::enable_if_t<!std::is_same<std::decay_t<T>, any>::value>>
    any(T const &value) : m_content(new holder<T>(value)) {}
    any(any const &other) : m_content(other.m_content ? other.m_content->clone() : nullptr) {}
    ~any() { delete m_content; }

    // Clones first, so that self-assignment is safe and a throwing copy leaves the target as
    // it was.
    any &operator=(any const &other) {
        placeholder *copy = other.m_content ? other.m_content->clone() : nullptr;
        placeholder *old = m_content;
        m_content = copy;
        delete old;
        return *this;
    }

    any &swap(any &other) {
        placeholder *mine = m_content;
        m_content = other.m_content;
        other.m_content = mine;
        return *this;
    }

    bool empty() const { return m_content == nullptr; }

    // The left operand must not be empty: test `empty()` first.
    bool operator==(any const &other) const { return m_content->equals(other.m_content); }

    // The left operand must not be empty.
    std::type_info const &type() const { return m_content->type(); }

private:
    template <typename T>
    friend T *any_cast(any *operand);

    placeholder *m_content = nullptr;
};

class VORT_EXPORT bad_any_cast : public std::bad_cast {
public:
    bad_any_cast() = default;
    ~bad_any_cast() override;
    // "VORT::bad_any_cast: failed conversion using VORT::any_cast"
    const char *what() const noexcept override;
};

// The held value if `operand` holds exactly a `T`, else null.
template <typename T>
T *any_cast(any *operand) {
    if (operand == nullptr || operand->m_content == nullptr || operand->m_content->isNull() != 0 ||
        operand->m_content->type() != typeid(T)) {
        return nullptr;
    }
    return &static_cast<any::holder<T> *>(operand->m_content)->held;
}

template <typename T>
const T *any_cast(const any *operand) {
    return any_cast<T>(const_cast<any *>(operand));
}

// A copy of the held value; throws `bad_any_cast` unless `operand` holds exactly a `T`.
template <typename T>
T any_cast(any const &operand) {
    const T *value = any_cast<T>(&operand);
    if (value == nullptr) {
        throw bad_any_cast();
    }
    return *value;
}

}  // namespace VORT

#endif  // VORT_BONES_ANY_H
