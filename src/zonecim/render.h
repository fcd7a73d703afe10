// wbemcli's text forms of what a provider hands back.
//
//   path       namespace:Class.Key="text",Num=5,Flag=TRUE,Ref=namespace:Other.Key="v"
//              (no host part: zonecim talks to no server; a path without a
//              namespace prints as Class.Key=...)
//   instance   <path> Prop="text",Num=5,Null=,Empty="",Arr="a","b",Nums=1,2,Ref=ns:C.K="v"
//              (properties in the instance's order; strings quoted with " shown
//              as \"; numbers, booleans (TRUE/FALSE), datetimes and char16 bare;
//              a null value or a null or empty array prints nothing after '=')
//   method     <target path> Method: <return value>, Out (type): value, ...
//              (values never quoted; references as paths)
//   status     Cim: (6) CIM_ERR_NOT_FOUND: <message>
#pragma once

#include <cmpidt.h>
#include <cmpift.h>

#include <string>

namespace zonecim {

std::string path_text(const CMPIObjectPath *path);

// A value as it appears after "Name=" in a property or key list.
std::string value_text(const CMPIData &data);
// A value as cm shows return values and output arguments: never quoted.
std::string bare_value_text(const CMPIData &data);
// The CIM-XML PARAMTYPE of a value ("string", "uint16", "reference", ...).
std::string param_type_text(CMPIType type);

// "Prop=value,..." of an instance.
std::string properties_text(const CMPIInstance *instance);
// "<path> Prop=value,..." with the instance's own path.
std::string instance_text(const CMPIInstance *instance);

// The cm line; return_value may be null when the provider handed none.
std::string method_text(const CMPIObjectPath *target, const std::string &method,
                        const CMPIData *return_value, const CMPIArgs *out);

// "Cim: (rc) NAME: message" as wbemcli reports a failed operation.
std::string status_text(CMPIrc rc, const std::string &message);

}  // namespace zonecim
