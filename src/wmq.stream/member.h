// Names and types of structure members, known from pointers to them.
#ifndef WMQ_STREAM_MEMBER_H
#define WMQ_STREAM_MEMBER_H

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

namespace wmq {

template <typename T>
struct MemberPointer;
template <typename T, typename L>
struct MemberPointer<T L::*> {
  using Type = T;
  using Log = L;
};

template <auto M>
using TypeOf = typename MemberPointer<decltype(M)>::Type;
template <auto M>
using LogOf = typename MemberPointer<decltype(M)>::Log;

namespace detail {

template <auto M>
constexpr std::string_view memberSpelling() {
  constexpr std::string_view signature = __PRETTY_FUNCTION__;  // "... [with auto M = &log::member; ...]"
  constexpr size_t begin = signature.find("M = ") + 4;
  constexpr size_t end = signature.find_first_of(";]", begin);
  constexpr std::string_view spelled = signature.substr(begin, end - begin);
  return spelled.substr(spelled.rfind(':') + 1);
}

// A view would keep the whole signature in the binary.
template <auto M>
constexpr auto memberText() {
  constexpr std::string_view name = memberSpelling<M>();
  std::array<char, name.size() + 1> text{};
  for (size_t i = 0; i < name.size(); ++i) text[i] = name[i];
  return text;
}

template <auto M>
inline constexpr auto memberNameText = memberText<M>();

}  // namespace detail

template <auto M>
inline constexpr const char *nameOf = detail::memberNameText<M>.data();

template <typename T>
constexpr std::string_view typeSpelling() {
  constexpr std::string_view signature = __PRETTY_FUNCTION__;
  constexpr size_t begin = signature.find("T = ") + 4;
  constexpr size_t end = signature.find_first_of(";]", begin);
  return signature.substr(begin, end - begin);
}

}  // namespace wmq

#endif
