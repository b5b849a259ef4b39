#pragma once

#include "support/link.h"

#include <array>
#include <cstring>
#include <limits>
#include <random>
#include <string_view>

/// Every operation of the façade, of the register interface and of the link, as a table.
namespace irmtest {

/// What an operation gives when C calls of it fail.
enum class Rule {
    same,    ///< what it always gives
    open,    ///< nothing that could be foretold
    alone,   ///< likewise; no façade is there before it
    last,    ///< the transfer result of its last transfer
    all,     ///< 0 when all transfers are complete, else 255
    value,   ///< `refused` when a transfer fails
    placed,  ///< 0 when all writes are complete, else -1
    located, ///< 0 when the first three reads are complete, else -1
    vsk,     ///< 0 when the answer comes, else -1
    parity,  ///< -1 when a terminal call fails
    got,     ///< the number of bytes that came
    sent,    ///< what its write to the port gives
};

/// 32 bits whose type says so.
struct Random : std::mt19937 {
    using std::mt19937::mt19937;
    std::uint32_t operator()() { return static_cast<std::uint32_t>(std::mt19937::operator()()); }
};

struct Operation {
    std::string name;
    Rule rule;
    std::string (*run)(Host&); ///< the result, a blank, what it wrote to its arguments
    void (*abuse)(Host&, Random&) = nullptr; ///< the same with any arguments
    const char* refused = "";
};

/// Room for what the pointers of one call point to.
class Slots {
public:
    static constexpr std::size_t bytes = 1U << 18U, count = 8;
    /// `shown`: what it holds afterwards is part of the call's result.
    void* next(bool shown = true) {
        m_shown[m_used % count] = shown;
        unsigned char* slot = s_room[m_used++ % count].data();
        for (std::size_t i = 0; i < 1024; i += 2) // words of 9
            slot[i] = 9, slot[i + 1] = 0;
        return slot;
    }
    std::string text() const {
        std::string all;
        for (std::size_t i = 0; i < m_used; ++i)
            for (std::size_t byte = 0; byte < 20 && m_shown[i]; ++byte)
                all += hex(s_room[i][byte]);
        return all;
    }

private:
    alignas(16) static inline std::array<std::array<unsigned char, bytes>, count> s_room{};
    std::array<bool, count> m_shown{};
    std::size_t m_used = 0;
};

/// An argument that a careful host would give.
template <typename T>
T sane(Slots& given) {
    using Value = std::remove_const_t<std::remove_reference_t<T>>;
    if constexpr (std::is_same_v<T, const char*>)
        return "etc/calc_len0_temp0.conf";
    else if constexpr (std::is_pointer_v<T>)
        return static_cast<T>(given.next());
    else if constexpr (std::is_reference_v<T>) {
        constexpr bool input = std::is_const_v<std::remove_reference_t<T>>;
        auto* value = static_cast<Value*>(given.next(!input));
        if constexpr (input)
            *value = sane<Value>(given);
        return *value;
    } else if constexpr (std::is_same_v<T, TempSetup>)
        return {0.9F, 2, 0, 0};
    else if constexpr (std::is_same_v<T, Data_t>)
        return {0x79, 0, nullptr};
    else if constexpr (std::is_same_v<T, float>)
        return 20;
    else if constexpr (std::is_enum_v<T> || std::is_class_v<T> || std::is_same_v<T, bool>)
        return T{};
    else
        return 1;
}

inline std::uint32_t hostileWord(Random& random) {
    const float inf = std::numeric_limits<float>::infinity();
    const float floats[] = {NAN, inf, -inf, 1e-45F, 3.4e38F, -3.4e38F, -0.0F, 1e10F, 273.15F};
    constexpr std::int64_t ints[] = {INT32_MIN, -32769, -1,    0,       1,         2,
                                     16,        17,     255,   256,     257,       INT32_MAX,
                                     65535,     65536,  99999, 1000000, 0x7F800001};
    if (random() % 2 != 0)
        return static_cast<std::uint32_t>(ints[random() % std::size(ints)] & 0xFFFFFFFF);
    std::uint32_t bits = 0;
    std::memcpy(&bits, &floats[random() % std::size(floats)], sizeof bits);
    return random() % 4 == 0 ? static_cast<std::uint32_t>(random()) : bits;
}

/// An argument that no host should give. `room`: what pointers point to has a length beside it.
template <typename T>
T hostile(Slots& given, Random& random, bool room) {
    using Value = std::remove_const_t<std::remove_reference_t<T>>;
    if constexpr (std::is_same_v<T, const char*>) {
        static const std::string longName(5000, 'x');
        const char* names[] = {nullptr, "", ".", "/", "/dev/null", "%n%s", longName.c_str()};
        return names[random() % std::size(names)];
    } else if constexpr (std::is_pointer_v<T>)
        return random() % 3 == 0 ? nullptr : static_cast<T>(given.next());
    else if constexpr (std::is_reference_v<T>) {
        auto* value = static_cast<Value*>(given.next());
        *value = hostile<Value>(given, random, room);
        return *value;
    } else if constexpr (std::is_same_v<T, Data_t>)
        return {9, static_cast<std::uint8_t>(random() & 255),
                hostile<unsigned char*>(given, random, room)};
    else if constexpr (std::is_same_v<T, bool>)
        return random() % 2 != 0;
    else if constexpr (std::is_class_v<T>) {
        T value{};
        for (std::size_t i = 0; i + 4 <= sizeof(T); i += 4) {
            const std::uint32_t word = hostileWord(random);
            std::memcpy(reinterpret_cast<unsigned char*>(&value) + i, &word, sizeof word);
        }
        return value;
    } else if constexpr (std::is_same_v<T, float>) {
        float value = 0;
        const std::uint32_t word = hostileWord(random);
        std::memcpy(&value, &word, sizeof value);
        return value;
    } else {
        const auto word = static_cast<std::int32_t>(hostileWord(random));
        return static_cast<T>(room ? word % 100000 : word);
    }
}

template <typename T>
std::string shown(const T& result) {
    if constexpr (std::is_same_v<T, QString>)
        return result.toStdString();
    else if constexpr (std::is_enum_v<T> || std::is_integral_v<T>)
        return std::to_string(static_cast<long>(result));
    else if constexpr (std::is_floating_point_v<T>)
        return joined(result);
    else
        return "object";
}

template <typename C>
C& objectOf(Host& h) {
    if constexpr (std::is_same_v<C, Serial>)
        return *h.host->getSerial();
    else if constexpr (std::is_same_v<C, TempHandler>)
        return *h.host->m_sysTempHandler;
    else if constexpr (std::is_same_v<C, IRPara>)
        return h.host->m_irPara;
    else if constexpr (std::is_same_v<C, ISOHandler>)
        return h.host->m_isoHandler;
    else if constexpr (std::is_same_v<C, CalcTrans>) {
        static CalcTrans air;
        return air;
    } else
        return *h.host;
}

/// A member function, taken apart.
template <auto Op, typename C, typename R, typename... A>
struct Member {
    template <auto... Given>
    static std::string run(Host& h) {
        Slots given;
        const auto call = [&]() -> R {
            if constexpr (sizeof...(Given) > 0)
                return (objectOf<C>(h).*Op)(static_cast<A>(Given)...);
            else
                return (objectOf<C>(h).*Op)(sane<A>(given)...);
        };
        if constexpr (std::is_void_v<R>)
            return call(), "none " + given.text();
        else {
            const std::string result = shown<std::decay_t<R>>(call());
            return result + ' ' + given.text();
        }
    }
    static void abuse(Host& h, Random& random) {
        [[maybe_unused]] constexpr bool room = (std::is_pointer_v<A> || ...);
        Slots given;
        (objectOf<C>(h).*Op)(hostile<A>(given, random, room)...);
    }
};
template <auto Op, typename C, typename R, typename... A>
Member<Op, C, R, A...> taken(R (C::*)(A...));
template <auto Op, typename C, typename R, typename... A>
Member<Op, C, R, A...> taken(R (C::*)(A...) const);

template <auto Op>
std::string nameOf() {
    std::string_view name = __PRETTY_FUNCTION__;
    name = name.substr(name.find('&') + 1);
    return std::string(name.substr(0, name.find_first_of("];,)")));
}

/// Operations with the same rule.
template <auto... Op>
void add(std::vector<Operation>& all, Rule rule, const char* refused = "") {
    (all.push_back({nameOf<Op>(), rule, &decltype(taken<Op>(Op))::template run<>,
                    &decltype(taken<Op>(Op))::abuse, refused}),
     ...);
}
/// One operation with arguments of its own.
template <auto Op, auto... Given>
void with(std::vector<Operation>& all, Rule rule) {
    all.push_back({nameOf<Op>(), rule, &decltype(taken<Op>(Op))::template run<Given...>,
                   &decltype(taken<Op>(Op))::abuse});
}

/// All that is exported and makes C calls, each once; what follows has a name with a blank in it.
const std::vector<Operation>& operations();

} // namespace irmtest
