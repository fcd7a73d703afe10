// Zone members as the simulated switch keeps them (store.h's Member), made
// from the three ways a member is named: by CIM member type and identifier
// text (clients, fabric files), by zone server code and encoded value (the
// add command), and by member InstanceID.
#pragma once

#include <cstdint>
#include <string_view>

#include "sim/store.h"

namespace zonesim {

// 0, or kErrInvalidArgument when the type is unknown or the text doesn't
// fit it. The member text of the InstanceID is the formatted value for the
// binary kinds and the text as given for the others; the value text is the
// text as given.
int memberFromText(int vsan, bool active, std::uint32_t cim_type, std::string_view text,
                   Member *out);

// 0, or kErrInvalidArgument when the code is unknown or length is not the
// code's value length. 231 is taken as 109.
int memberFromValue(int vsan, bool active, std::uint32_t code, const unsigned char *value,
                    int length, Member *out);

// 0, or kErrInvalidArgument when the id is not a member InstanceID of a
// known type and a valid text ("vsan^cim type^member text^active").
int memberFromInstanceId(const char *instance_id, Member *out);

// The same check of a member InstanceID without making the member: 0 with
// the id's active flag, or kErrInvalidArgument exactly when
// memberFromInstanceId refuses the id.
int activeOfMemberInstanceId(const char *instance_id, bool *active);

}  // namespace zonesim
