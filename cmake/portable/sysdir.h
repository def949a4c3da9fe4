/* What the kit calls of Apple's header of that name, which the cross compiler does not carry; its man page is
 * sysdir(3). */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef enum { SYSDIR_DIRECTORY_APPLICATION_SUPPORT = 14 } sysdir_search_path_directory_t;
typedef enum { SYSDIR_DOMAIN_MASK_USER = 1 } sysdir_search_path_domain_mask_t;
typedef unsigned int sysdir_search_path_enumeration_state;

sysdir_search_path_enumeration_state sysdir_start_search_path_enumeration(sysdir_search_path_directory_t dir,
                                                                          sysdir_search_path_domain_mask_t domainMask);
sysdir_search_path_enumeration_state sysdir_get_next_search_path_enumeration(
    sysdir_search_path_enumeration_state state, char* path);

#ifdef __cplusplus
}
#endif
