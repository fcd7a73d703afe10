/*
 * What the simulated switch puts into the parts of the platform records that
 * the provider treats as opaque: the description of a VSAN (VsanEntry after
 * the number) and the domain manager's entry (DomainEntry). The builders read
 * them through these overlays; the VSAN table and the domain manager fill
 * them. Unused bytes are zero.
 */
#ifndef ZONE_SIM_RECORDS_H
#define ZONE_SIM_RECORDS_H

#include <stdint.h>

#include "platform/zoning_platform.h"

#ifdef __cplusplus
extern "C" {
#endif

#define SIM_NAME_LEN 68         /* VSAN name: up to 64 characters and a NUL  */
#define SIM_SWITCH_NAME_LEN 256 /* switch name: up to 255 characters and a NUL */

/* VsanEntry as the simulated VSAN table fills it. */
typedef struct SimVsanEntry {
    int32_t vsan;                          /* the VSAN number (VsanEntry.vsan) */
    char name[SIM_NAME_LEN];               /* e.g. "VSAN0010"                  */
    char switch_name[SIM_SWITCH_NAME_LEN]; /* the switch's name (getCSName)   */
    int32_t has_domain;                    /* 1 when dm_cim_get_dmEntry has an entry */
    int32_t domain_id;                     /* the switch's domain ID, 0 when none */
    unsigned char reserved[ZP_VSAN_ENTRY_SIZE - 4 - SIM_NAME_LEN - SIM_SWITCH_NAME_LEN - 8];
} SimVsanEntry;

/* DomainEntry as the simulated domain manager fills it. */
typedef struct SimDomainEntry {
    int32_t vsan;                          /* the VSAN the entry belongs to    */
    int32_t domain_id;                     /* 1..239                           */
    unsigned char switch_wwn[8];           /* this switch's WWN in the VSAN    */
    unsigned char principal_wwn[8];        /* fabric name: the principal switch's WWN */
    char switch_name[SIM_SWITCH_NAME_LEN]; /* the switch's name               */
    unsigned char reserved[ZP_DOMAIN_ENTRY_SIZE - 8 - 16 - SIM_SWITCH_NAME_LEN];
} SimDomainEntry;

#ifdef __cplusplus
}
#define SIM_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define SIM_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

SIM_STATIC_ASSERT(sizeof(SimVsanEntry) == sizeof(VsanEntry), "SimVsanEntry overlays VsanEntry");
SIM_STATIC_ASSERT(sizeof(SimDomainEntry) == sizeof(DomainEntry),
                  "SimDomainEntry overlays DomainEntry");

#endif /* ZONE_SIM_RECORDS_H */
