/* SPDX-License-Identifier: Apache-2.0 */
/* Size and alignment of every record, offset and size of every field, value of every constant of
 * the public header: the numbers are the contract with programs already built, the same on 64-bit
 * hosts and on 32-bit ARM. Compiled as C and as C++; check_layouts.py tells when the header has
 * something that is not here. */
#include <stddef.h>
#include <vekdb_pwrmgt.h>

#ifdef __cplusplus
#define HOLDS(condition, text) static_assert(condition, text)
#define ALIGNMENT(type) alignof(type)
#else
#define HOLDS(condition, text) _Static_assert(condition, text)
#define ALIGNMENT(type) _Alignof(type)
#endif

#define RECORD(record, size, alignment)                  \
    HOLDS(sizeof(record) == (size), "size of " #record); \
    HOLDS(ALIGNMENT(record) == (alignment), "alignment of " #record)
#define FIELD(record, field, offset, size)                                       \
    HOLDS(offsetof(record, field) == (offset), "offset of " #record "." #field); \
    HOLDS(sizeof(((record*)0)->field) == (size), "size of " #record "." #field)
#define CONSTANT(name, value) HOLDS((name) == (value), "value of " #name)

/* clang-format off */
CONSTANT(PWRMGT_NO_POWER, 65535);
CONSTANT(PWRMGT_NO_PERCENT, 255);
CONSTANT(PWRMGT_POLICY_UNREAD, 255);
CONSTANT(PWRMGT_RING_SLOTS, 2880);
CONSTANT(PWRMGT_SLOT_SECONDS, 30);
CONSTANT(PWRMGT_MAX_PERIOD_ENTRIES, 120);
CONSTANT(PWRMGT_MAX_WINDOW_ENTRIES, 2880);
CONSTANT(PWRMGT_MAX_CPU_ROWS, 20);
CONSTANT(PWRMGT_ALL_CPUS, 255);
CONSTANT(PWRMGT_PSU_UNKNOWN, 15);
CONSTANT(PWRMGT_PSU_CONFIG_UNREAD, 255);
CONSTANT(PWRMGT_REDUN_MODE_ROWS, 28);
CONSTANT(PWRMGT_MAX_AUDIT_NAME, 64);
CONSTANT(PWRMGT_MAX_STORE_NAME, 112);
CONSTANT(PWRMGT_REPLY_SIZE, 256);
CONSTANT(PWRMGT_MAX_WINDOW_ENTRIES, 2880);
CONSTANT(PWRMGT_MAX_CPU_ROWS, 20);
CONSTANT(PWRMGT_ALL_CPUS, 255);
CONSTANT(PWRMGT_MAX_PSU, 12);
CONSTANT(PWRMGT_PSU_UNKNOWN, 15);
CONSTANT(PWRMGT_PSU_CONFIG_UNREAD, 255);
CONSTANT(PWRMGT_REDUN_MODE_ROWS, 28);
CONSTANT(PWRMGT_MAX_AUDIT_NAME, 64);
CONSTANT(PWRMGT_MAX_STORE_NAME, 112);
CONSTANT(PWRMGT_REPLY_SIZE, 256);
CONSTANT(PWRMGT_ORDER_SIZE, 32);
CONSTANT(PWRMGT_FILTER_SIZE, 256);
CONSTANT(PWRMGT_PERIOD_1_HOUR, 0);
CONSTANT(PWRMGT_PERIOD_6_HOURS, 1);
CONSTANT(PWRMGT_PERIOD_12_HOURS, 2);
CONSTANT(PWRMGT_PERIOD_24_HOURS, 3);
CONSTANT(PWRMGT_DOMAIN_SYSTEM, 0);
CONSTANT(PWRMGT_DOMAIN_CPU, 1);
CONSTANT(PWRMGT_DOMAIN_MEMORY, 2);
CONSTANT(PWRMGT_DOMAIN_PSU, 3);
HOLDS(sizeof(pwrmgt_pwr_domain) == 4, "size of pwrmgt_pwr_domain");

RECORD(pwrmgt_realtime_pwr_t, 20, 4);
FIELD(pwrmgt_realtime_pwr_t, lead0, 0, 4);
FIELD(pwrmgt_realtime_pwr_t, lead1, 4, 4);
FIELD(pwrmgt_realtime_pwr_t, sys_ac_w, 8, 2);
FIELD(pwrmgt_realtime_pwr_t, sys_dc_w, 10, 2);
FIELD(pwrmgt_realtime_pwr_t, cpu_dc_w, 12, 2);
FIELD(pwrmgt_realtime_pwr_t, mem_dc_w, 14, 2);
FIELD(pwrmgt_realtime_pwr_t, sys_pct, 16, 1);
FIELD(pwrmgt_realtime_pwr_t, cpu_pct, 17, 1);
FIELD(pwrmgt_realtime_pwr_t, mem_pct, 18, 1);
FIELD(pwrmgt_realtime_pwr_t, io_pct, 19, 1);

RECORD(pwrmgt_hist_pwr_sample_t, 20, 4);
FIELD(pwrmgt_hist_pwr_sample_t, index, 0, 2);
FIELD(pwrmgt_hist_pwr_sample_t, timestamp, 4, 4);
FIELD(pwrmgt_hist_pwr_sample_t, avg, 8, 2);
FIELD(pwrmgt_hist_pwr_sample_t, max, 10, 2);
FIELD(pwrmgt_hist_pwr_sample_t, min, 12, 2);
FIELD(pwrmgt_hist_pwr_sample_t, avg2, 14, 2);
FIELD(pwrmgt_hist_pwr_sample_t, max2, 16, 2);
FIELD(pwrmgt_hist_pwr_sample_t, min2, 18, 2);

RECORD(pwrmgt_hist_psu_sample_t, 12, 4);
FIELD(pwrmgt_hist_psu_sample_t, index, 0, 2);
FIELD(pwrmgt_hist_psu_sample_t, timestamp, 4, 4);
FIELD(pwrmgt_hist_psu_sample_t, avg_ac, 8, 2);
FIELD(pwrmgt_hist_psu_sample_t, avg_dc, 10, 2);

RECORD(pwrmgt_hist_perf_sample_t, 16, 4);
FIELD(pwrmgt_hist_perf_sample_t, index, 0, 2);
FIELD(pwrmgt_hist_perf_sample_t, timestamp, 4, 4);
FIELD(pwrmgt_hist_perf_sample_t, sys_avg, 8, 1);
FIELD(pwrmgt_hist_perf_sample_t, sys_max, 9, 1);
FIELD(pwrmgt_hist_perf_sample_t, sys_min, 10, 1);
FIELD(pwrmgt_hist_perf_sample_t, cpu_avg, 11, 1);
FIELD(pwrmgt_hist_perf_sample_t, mem_avg, 12, 1);
FIELD(pwrmgt_hist_perf_sample_t, io_avg, 13, 1);

RECORD(pwrmgt_hist_sample_t, 124, 4);
FIELD(pwrmgt_hist_sample_t, system, 0, 20);
FIELD(pwrmgt_hist_sample_t, cpu, 20, 20);
FIELD(pwrmgt_hist_sample_t, memory, 40, 20);
FIELD(pwrmgt_hist_sample_t, psu, 60, 48);
FIELD(pwrmgt_hist_sample_t, perf, 108, 16);

RECORD(pwrmgt_hist_extra_sample_t, 96, 4);
FIELD(pwrmgt_hist_extra_sample_t, psu, 0, 96);

RECORD(pwrmgt_cpu_pwr_sample_t, 24, 4);
FIELD(pwrmgt_cpu_pwr_sample_t, id, 0, 2);
FIELD(pwrmgt_cpu_pwr_sample_t, timestamp, 4, 4);
FIELD(pwrmgt_cpu_pwr_sample_t, cpu_w, 8, 16);

RECORD(pwrmgt_hist_cpu_pwr_t, 12, 4);
FIELD(pwrmgt_hist_cpu_pwr_t, index, 0, 2);
FIELD(pwrmgt_hist_cpu_pwr_t, timestamp, 4, 4);
FIELD(pwrmgt_hist_cpu_pwr_t, cpu_pwr, 8, 2);

RECORD(pwrmgt_hist_entire_cpu_pwr_t, 24, 4);
FIELD(pwrmgt_hist_entire_cpu_pwr_t, index, 0, 2);
FIELD(pwrmgt_hist_entire_cpu_pwr_t, timestamp, 4, 4);
FIELD(pwrmgt_hist_entire_cpu_pwr_t, cpu_pwr, 8, 16);

RECORD(pwrmgt_power_policy_t, 20, 2);
FIELD(pwrmgt_power_policy_t, is_blade, 0, 1);
FIELD(pwrmgt_power_policy_t, redun_mode, 1, 1);
FIELD(pwrmgt_power_policy_t, maxim_status, 2, 1);
FIELD(pwrmgt_power_policy_t, cap_enable, 3, 1);
FIELD(pwrmgt_power_policy_t, cap_mode, 4, 1);
FIELD(pwrmgt_power_policy_t, cap_value, 6, 2);
FIELD(pwrmgt_power_policy_t, cap_soft_ac, 8, 2);
FIELD(pwrmgt_power_policy_t, cap_min_ac, 10, 2);
FIELD(pwrmgt_power_policy_t, cap_max_ac, 12, 2);
FIELD(pwrmgt_power_policy_t, cap_soft_dc, 14, 2);
FIELD(pwrmgt_power_policy_t, cap_min_dc, 16, 2);
FIELD(pwrmgt_power_policy_t, cap_max_dc, 18, 2);

RECORD(pwrmgt_psu_property_t, 10, 2);
FIELD(pwrmgt_psu_property_t, psu_id, 0, 1);
FIELD(pwrmgt_psu_property_t, present, 1, 1);
FIELD(pwrmgt_psu_property_t, input_ac_lost, 2, 1);
FIELD(pwrmgt_psu_property_t, psu_fault, 3, 1);
FIELD(pwrmgt_psu_property_t, input_voltage, 4, 1);
FIELD(pwrmgt_psu_property_t, input_label_power, 6, 2);
FIELD(pwrmgt_psu_property_t, output_label_power, 8, 2);

RECORD(pwrmgt_psus_property_t, 124, 2);
FIELD(pwrmgt_psus_property_t, psu_count, 0, 1);
FIELD(pwrmgt_psus_property_t, present_count, 1, 1);
FIELD(pwrmgt_psus_property_t, healthy_count, 2, 1);
FIELD(pwrmgt_psus_property_t, psu, 4, 120);

RECORD(pwrmgt_redun_mode_map_t, 16, 4);
FIELD(pwrmgt_redun_mode_map_t, hw_config, 0, 4);
FIELD(pwrmgt_redun_mode_map_t, output_label_power, 4, 2);
FIELD(pwrmgt_redun_mode_map_t, output_gpu_power, 6, 2);
FIELD(pwrmgt_redun_mode_map_t, psu_present, 8, 4);
FIELD(pwrmgt_redun_mode_map_t, redun_mode, 12, 4);

RECORD(pwrmgt_slot_dev_pwr_t, 16, 4);
FIELD(pwrmgt_slot_dev_pwr_t, word, 0, 4);
FIELD(pwrmgt_slot_dev_pwr_t, value, 4, 10);

RECORD(pwrmgt_cpu_pcap_t, 18, 2);
FIELD(pwrmgt_cpu_pcap_t, count, 0, 2);
FIELD(pwrmgt_cpu_pcap_t, cap_w, 2, 16);
HOLDS(sizeof(default_redun_mode_map) == 28 * 16, "size of default_redun_mode_map");

RECORD(pwrmgt_psu_property_t, 10, 2);
FIELD(pwrmgt_psu_property_t, psu_id, 0, 1);
FIELD(pwrmgt_psu_property_t, present, 1, 1);
FIELD(pwrmgt_psu_property_t, input_ac_lost, 2, 1);
FIELD(pwrmgt_psu_property_t, psu_fault, 3, 1);
FIELD(pwrmgt_psu_property_t, input_voltage, 4, 1);
FIELD(pwrmgt_psu_property_t, input_label_power, 6, 2);
FIELD(pwrmgt_psu_property_t, output_label_power, 8, 2);

RECORD(pwrmgt_psus_property_t, 124, 2);
FIELD(pwrmgt_psus_property_t, psu_count, 0, 1);
FIELD(pwrmgt_psus_property_t, present_count, 1, 1);
FIELD(pwrmgt_psus_property_t, healthy_count, 2, 1);
FIELD(pwrmgt_psus_property_t, psu, 4, 120);

RECORD(pwrmgt_redun_mode_map_t, 16, 4);
FIELD(pwrmgt_redun_mode_map_t, hw_config, 0, 4);
FIELD(pwrmgt_redun_mode_map_t, output_label_power, 4, 2);
FIELD(pwrmgt_redun_mode_map_t, output_gpu_power, 6, 2);
FIELD(pwrmgt_redun_mode_map_t, psu_present, 8, 4);
FIELD(pwrmgt_redun_mode_map_t, redun_mode, 12, 4);

RECORD(pwrmgt_slot_dev_pwr_t, 16, 4);
FIELD(pwrmgt_slot_dev_pwr_t, word, 0, 4);
FIELD(pwrmgt_slot_dev_pwr_t, value, 4, 10);

RECORD(pwrmgt_cpu_pcap_t, 18, 2);
FIELD(pwrmgt_cpu_pcap_t, count, 0, 2);
FIELD(pwrmgt_cpu_pcap_t, cap_w, 2, 16);

RECORD(thermal_hist_entry_t, 4, 2);
FIELD(thermal_hist_entry_t, type, 0, 1);
FIELD(thermal_hist_entry_t, instance, 1, 1);
FIELD(thermal_hist_entry_t, value, 2, 2);

RECORD(thermal_hist_update_t, 12, 4);
FIELD(thermal_hist_update_t, timestamp, 0, 4);
FIELD(thermal_hist_update_t, count, 4, 2);
FIELD(thermal_hist_update_t, entries, 6, 4);

RECORD(pwrmgt_therm_triple_t, 6, 2);
FIELD(pwrmgt_therm_triple_t, max, 0, 2);
FIELD(pwrmgt_therm_triple_t, avg, 2, 2);
FIELD(pwrmgt_therm_triple_t, min, 4, 2);

RECORD(pwrmgt_therm_sample_t, 128, 4);
FIELD(pwrmgt_therm_sample_t, index, 0, 2);
FIELD(pwrmgt_therm_sample_t, tm, 4, 4);
FIELD(pwrmgt_therm_sample_t, cpu, 8, 48);
FIELD(pwrmgt_therm_sample_t, memory, 56, 48);
FIELD(pwrmgt_therm_sample_t, ambient, 104, 12);
FIELD(pwrmgt_therm_sample_t, exhaust, 116, 12);

RECORD(pwrmgt_therm_realtime_t, 296, 2);
FIELD(pwrmgt_therm_realtime_t, lead, 0, 8);
FIELD(pwrmgt_therm_realtime_t, cpu, 8, 16);
FIELD(pwrmgt_therm_realtime_t, memory, 24, 256);
FIELD(pwrmgt_therm_realtime_t, ambient, 280, 16);
/* clang-format on */

#ifdef PWRMGT_WRONG_LAYOUT
/* Must not compile: shows that a wrong number is noticed. */
FIELD(pwrmgt_power_policy_t, cap_value, 5, 2);
#endif
