// A readable listing of the type library, written from the same member
// tables that drive dispatch.
#pragma once

#include "tylhart/core/Dispatch.hpp"

namespace tylhart::automation {

// The library header, then for every built class its identities and its
// interface's members in slot order (dispatch identifier, accessors, name,
// parameters, result type, hidden flag), then the enumerations with their
// members. Line by line deterministic, so tools and tests can compare it.
Text typeLibraryListing();

// One member's line of that listing, newline included:
// "  0x68030000 get let Name() As String". Data fields have no parameter
// list, which sets them apart from properties with code.
Text memberListing(const MemberInfo& member);

}  // namespace tylhart::automation
