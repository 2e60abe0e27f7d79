// How the command table calls a command: a procedure, and for the members of a family which member.
#pragma once

#include <cstdint>

// What tells a family's members apart: a request, a register's bit, a place in a table.
using Member = uint16_t;

// A command's procedure as the dispatcher calls it, with the caller's pointer unchanged.
using CommandHandler = int32_t (*)(void* argument, Member member);

// The handler and member of a row, and the type of the pointer that the procedure takes.
template <class Pointer> struct CommandCall {
    using Argument = Pointer;
    CommandHandler handler;
    Member member;
};

namespace detail
{

template <class Record, class... Rest> Record* argument_type(int32_t (*)(Record*, Rest...));

} // namespace detail

template <auto kProcedure> using ArgumentOf = decltype(detail::argument_type(kProcedure));

// The call of a procedure that takes its own record. Only here and in handler_of is the caller's
// pointer cast to what the procedure takes.
template <auto kProcedure> constexpr CommandCall<ArgumentOf<kProcedure>> call_of()
{
    return {[](void* argument, Member /*none*/) -> int32_t {
                return kProcedure(static_cast<ArgumentOf<kProcedure>>(argument));
            },
            0};
}

// The handler of a family's procedure, one for all types of record that the family serves.
template <auto kProcedure, class Which> constexpr CommandHandler handler_of()
{
    static_assert(sizeof(Which) <= sizeof(Member));
    return [](void* argument, Member member) -> int32_t {
        return kProcedure(static_cast<ArgumentOf<kProcedure>>(argument),
                          static_cast<Which>(member));
    };
}

// The call of a family's procedure, which takes the member besides. A family that serves records of
// many types names the pointer that this member's command takes.
template <auto kProcedure, class Argument = ArgumentOf<kProcedure>, class Which>
constexpr CommandCall<Argument> call_of(Which which)
{
    return {handler_of<kProcedure, Which>(), static_cast<Member>(which)};
}
