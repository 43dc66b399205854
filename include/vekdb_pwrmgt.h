/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Power and thermal data of a server, as its management controller keeps it.
 *
 * The library stores real-time readings and rolling 24-hour histories in the
 * tables of one database, `vek_pwr_db`, folds them into averages, maxima and
 * minima when they are asked for, and exchanges settings and live readings
 * with the platform firmware.
 *
 * Two kinds of callers: the power-management daemon hands a connection of its
 * own to the writers, one call at a time; front ends call the queries and
 * settings, each of which opens and closes its own connection.
 *
 * Conventions
 * - Every function returns a 32-bit status, 0 for success, unless it says
 *   otherwise. One number can carry several causes; each function lists its
 *   own, in the order in which they are tested.
 * - Watts, percent and seconds since the epoch. 65535 is no power reading,
 *   255 no percentage. A missing reading is never 0.
 * - Histories hold one row per 30 seconds. Results come newest first.
 * - A pointer that a function does not say it tests may still be null: the
 *   call then does everything else and writes nothing through it.
 * - Nothing is allocated for the caller; there is nothing to free. No
 *   function throws; an exception of a platform function passes through
 *   after handles are given back.
 * - No locks and no threads. Writers rely on one caller at a time; queries may
 *   run in several threads and processes at once.
 */
#pragma once

#include <stdint.h>

#define PWRMGT_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------
 * Constants
 * ------------------------------------------------------------------------ */

/** Values that stand for "no reading", and limits of the queries. */
enum {
    PWRMGT_NO_POWER = 65535,          /**< no valid power reading, or a limit that is not set */
    PWRMGT_NO_PERCENT = 255,          /**< no valid percentage */
    PWRMGT_POLICY_UNREAD = 255,       /**< #g_power_policy_flag before the first read */
    PWRMGT_RING_SLOTS = 2880,         /**< slots of the 24-hour ring, numbered 0..2879 */
    PWRMGT_SLOT_SECONDS = 30,         /**< seconds per slot */
    PWRMGT_MAX_PERIOD_ENTRIES = 120,  /**< entries at most of a by-period query */
    PWRMGT_MAX_WINDOW_ENTRIES = 2880, /**< entries at most of a by-window query */
    PWRMGT_MAX_CPU_ROWS = 20,         /**< rows at most of a processor query */
    PWRMGT_ALL_CPUS = 255,            /**< processor selector: all eight */
    PWRMGT_MAX_PSU = 12,              /**< highest bay number */
    PWRMGT_PSU_UNKNOWN = 15,          /**< no value in a byte of the supply table */
    PWRMGT_PSU_CONFIG_UNREAD = 255,   /**< #g_psu_config_info before the first read */
    PWRMGT_REDUN_MODE_ROWS = 28,      /**< rows of #default_redun_mode_map */
    PWRMGT_MAX_AUDIT_NAME = 64,       /**< characters at most of a requester's name */
    PWRMGT_MAX_STORE_NAME = 112,      /**< characters at most of a data-store file name */
    PWRMGT_REPLY_SIZE = 256,          /**< bytes that hold any answer of the firmware */
    PWRMGT_ORDER_SIZE = 32,           /**< bytes a caller gives for an ordering clause */
    PWRMGT_FILTER_SIZE = 256          /**< bytes a caller gives for a filter clause */
};

/** History period codes. */
enum {
    PWRMGT_PERIOD_1_HOUR = 0,
    PWRMGT_PERIOD_6_HOURS = 1,
    PWRMGT_PERIOD_12_HOURS = 2,
    PWRMGT_PERIOD_24_HOURS = 3
};

/**
 * What a power history tells of.
 *
 * In C++ an enumeration of its own type, because an exported symbol carries its
 * name; in C a 32-bit integer of the same values.
 */
#ifdef __cplusplus
enum pwrmgt_pwr_domain : uint32_t {
    PWRMGT_DOMAIN_SYSTEM = 0, /**< whole system, DC and AC */
    PWRMGT_DOMAIN_CPU = 1,    /**< processors */
    PWRMGT_DOMAIN_MEMORY = 2, /**< memory */
    PWRMGT_DOMAIN_PSU = 3     /**< one supply; duration summary only */
};
#else
typedef uint32_t pwrmgt_pwr_domain;
enum {
    PWRMGT_DOMAIN_SYSTEM = 0,
    PWRMGT_DOMAIN_CPU = 1,
    PWRMGT_DOMAIN_MEMORY = 2,
    PWRMGT_DOMAIN_PSU = 3
};
#endif

/**
 * A supply's bay number, 1..12, passed by value.
 *
 * In C++ an enumeration of its own type, as for #pwrmgt_pwr_domain: cast a number
 * to it. In C a 32-bit integer.
 */
#ifdef __cplusplus
enum psu_id_t : uint32_t {};
#else
typedef uint32_t psu_id_t;
#endif

/* ------------------------------------------------------------------------
 * Records
 * ------------------------------------------------------------------------ */

/**
 * One real-time power reading. 20 bytes.
 *
 * Stored in `RealTimePowersMem`; also what the firmware answers.
 */
typedef struct pwrmgt_realtime_pwr_t {
    uint32_t lead0;    /**< never stored and never written by the library */
    uint32_t lead1;    /**< never stored; the firmware's 32-bit word in a live reading */
    uint16_t sys_ac_w; /**< system AC power, watts; 65535 = no reading */
    uint16_t sys_dc_w; /**< system DC power, watts; 65535 = no reading */
    uint16_t cpu_dc_w; /**< processor DC power, watts; 65535 = no reading */
    uint16_t mem_dc_w; /**< memory DC power, watts; 65535 = no reading */
    uint8_t sys_pct;   /**< system utilisation, percent; 255 = no reading */
    uint8_t cpu_pct;   /**< processor utilisation, percent; 255 = no reading */
    uint8_t mem_pct;   /**< memory utilisation, percent; 255 = no reading */
    uint8_t io_pct;    /**< I/O utilisation, percent; 255 = no reading */
} pwrmgt_realtime_pwr_t;

/**
 * One entry of a power history. 20 bytes; two bytes of alignment follow `index`.
 *
 * The first group is DC power for the whole system, else the domain's own; the
 * second group is AC power, of the whole system only.
 */
typedef struct pwrmgt_hist_pwr_sample_t {
    uint16_t index;     /**< place in the result, 0 = newest */
    uint32_t timestamp; /**< newest slot of the entry before the end of the data; 0 = none */
    uint16_t avg;       /**< mean over the valid slots, truncated, watts; 65535 = none valid */
    uint16_t max;       /**< largest maximum, watts; 65535 = none valid */
    uint16_t min;       /**< smallest minimum, watts; 65535 = none valid */
    uint16_t avg2;      /**< second group's mean; untouched for processors and memory */
    uint16_t max2;      /**< second group's maximum; untouched for processors and memory */
    uint16_t min2;      /**< second group's minimum; untouched for processors and memory */
} pwrmgt_hist_pwr_sample_t;

/** One entry of a supply's history. 12 bytes; two bytes of alignment follow `index`. */
typedef struct pwrmgt_hist_psu_sample_t {
    uint16_t index;     /**< place in the result, 0 = newest */
    uint32_t timestamp; /**< newest slot of the entry before the end of the data; 0 = none */
    uint16_t avg_ac;    /**< mean input power, watts; 65535 = no valid slot */
    uint16_t avg_dc;    /**< mean output power, watts; 65535 = no valid slot */
} pwrmgt_hist_psu_sample_t;

/**
 * One entry of the performance history. 16 bytes; two bytes of alignment follow
 * `index` and two stand at the end.
 */
typedef struct pwrmgt_hist_perf_sample_t {
    uint16_t index;     /**< place in the result, 0 = newest */
    uint32_t timestamp; /**< newest slot of the entry before the end of the data; 0 = none */
    uint8_t sys_avg;    /**< mean system utilisation, percent; 255 = no valid slot */
    uint8_t sys_max;    /**< largest system utilisation, percent; 255 = no valid slot */
    uint8_t sys_min;    /**< smallest system utilisation, percent; 255 = no valid slot */
    uint8_t cpu_avg;    /**< mean processor utilisation, percent; 255 = no valid slot */
    uint8_t mem_avg;    /**< mean memory utilisation, percent; 255 = no valid slot */
    uint8_t io_avg;     /**< mean I/O utilisation, percent; 255 = no valid slot */
} pwrmgt_hist_perf_sample_t;

/**
 * What happened in one 30-second slot, as the daemon writes it. 124 bytes.
 *
 * The members' own `index` and `timestamp`, and the second group of `cpu` and
 * `memory`, are not stored.
 */
typedef struct pwrmgt_hist_sample_t {
    pwrmgt_hist_pwr_sample_t system; /**< first group DC, second group AC */
    pwrmgt_hist_pwr_sample_t cpu;    /**< first group only */
    pwrmgt_hist_pwr_sample_t memory; /**< first group only */
    pwrmgt_hist_psu_sample_t psu[4]; /**< supplies 1 to 4 */
    pwrmgt_hist_perf_sample_t perf;  /**< percentages */
} pwrmgt_hist_sample_t;

/** One 30-second slot of supplies 5 to 12. 96 bytes; `index` and `timestamp` are not stored. */
typedef struct pwrmgt_hist_extra_sample_t {
    pwrmgt_hist_psu_sample_t psu[8]; /**< supplies 5 to 12 */
} pwrmgt_hist_extra_sample_t;

/** One row of the processor history. 24 bytes; two bytes of alignment follow `id`. */
typedef struct pwrmgt_cpu_pwr_sample_t {
    uint16_t id;        /**< stored as `_id` */
    uint32_t timestamp; /**< stored as `Timestamp`, seconds */
    uint16_t cpu_w[8];  /**< average power of processors 1 to 8, watts; 65535 = no reading */
} pwrmgt_cpu_pwr_sample_t;

/**
 * One entry of one processor's history. 12 bytes; two bytes of alignment follow
 * `index` and two stand at the end.
 */
typedef struct pwrmgt_hist_cpu_pwr_t {
    uint16_t index;     /**< row number, 0 = newest */
    uint32_t timestamp; /**< the row's time, seconds; 0 = no such row */
    uint16_t cpu_pwr;   /**< average power as stored, watts; 65535 = no reading */
} pwrmgt_hist_cpu_pwr_t;

/** One entry of all processors' history. 24 bytes; two bytes of alignment follow `index`. */
typedef struct pwrmgt_hist_entire_cpu_pwr_t {
    uint16_t index;      /**< row number, 0 = newest */
    uint32_t timestamp;  /**< the row's time, seconds; 0 = no such row */
    uint16_t cpu_pwr[8]; /**< average power of processors 1 to 8, watts; 65535 = no reading */
} pwrmgt_hist_entire_cpu_pwr_t;

/**
 * The power policy, without its three unstress columns. 20 bytes; one byte of
 * alignment follows `cap_mode`.
 */
typedef struct pwrmgt_power_policy_t {
    uint8_t is_blade;     /**< `IsBlade`: 0 or 1; 2 = power management is not supported here */
    uint8_t redun_mode;   /**< `RedunMode`: supply redundancy mode */
    uint8_t maxim_status; /**< `MaximStatus`: maximizer status */
    uint8_t cap_enable;   /**< `CapEnable`: 1 = capping is on */
    uint8_t cap_mode;     /**< `CapMode`: capping mode, the firmware's meaning */
    uint16_t cap_value;   /**< `CapValue`: cap, watts; 65535 = not set */
    uint16_t cap_soft_ac; /**< `CapSoftAc`: soft limit, AC watts; 65535 = not set */
    uint16_t cap_min_ac;  /**< `CapMinAc`: lowest cap, AC watts; 65535 = not set */
    uint16_t cap_max_ac;  /**< `CapMaxAc`: highest cap, AC watts; 65535 = not set */
    uint16_t cap_soft_dc; /**< `CapSoftDc`: soft limit, DC watts; 65535 = not set */
    uint16_t cap_min_dc;  /**< `CapMinDc`: lowest cap, DC watts; 65535 = not set */
    uint16_t cap_max_dc;  /**< `CapMaxDc`: highest cap, DC watts; 65535 = not set */
} pwrmgt_power_policy_t;

/** One supply bay. 10 bytes; one byte of alignment follows `input_voltage`. */
typedef struct pwrmgt_psu_property_t {
    uint8_t psu_id;              /**< `PsuId`: bay number, 1-based; 15 = empty */
    uint8_t present;             /**< `Present`: 1 = a supply is there; 15 = unknown */
    uint8_t input_ac_lost;       /**< `InputAcLost`: 0 = input good; 15 = unknown */
    uint8_t psu_fault;           /**< `PsuFault`: 0 = no fault; 15 = unknown */
    uint8_t input_voltage;       /**< `InputVoltage`: class 0, 1 or 16; 15 = unknown */
    uint16_t input_label_power;  /**< `InputLablePower`: watts; 65535 = unknown */
    uint16_t output_label_power; /**< `OutputLablePower`: watts; 65535 = unknown */
} pwrmgt_psu_property_t;

/**
 * All supply bays. 124 bytes; one byte of alignment, never written, follows
 * `healthy_count`.
 */
typedef struct pwrmgt_psus_property_t {
    uint8_t psu_count;             /**< rows in the table */
    uint8_t present_count;         /**< rows with a bay number and a supply present */
    uint8_t healthy_count;         /**< of those, rows with input good and no fault */
    pwrmgt_psu_property_t psu[12]; /**< in the table's order; the rest unknown */
} pwrmgt_psus_property_t;

/** One row of #default_redun_mode_map. 16 bytes. */
typedef struct pwrmgt_redun_mode_map_t {
    uint32_t hw_config;          /**< hardware-configuration code, 1..3 */
    uint16_t output_label_power; /**< the weakest supply's label output power, watts */
    uint16_t output_gpu_power;   /**< largest adapter power that the row covers, watts */
    uint32_t psu_present;        /**< healthy supplies; only the low byte is compared */
    uint32_t redun_mode;         /**< mode to select */
} pwrmgt_redun_mode_map_t;

/** Powers of slot devices, the firmware's meaning. 16 bytes; two bytes of alignment at the end. */
typedef struct pwrmgt_slot_dev_pwr_t {
    uint32_t word;     /**< answer bytes 1 to 4 */
    uint16_t value[5]; /**< answer bytes 5 to 14 */
} pwrmgt_slot_dev_pwr_t;

/** Power caps of the processors. 18 bytes. */
typedef struct pwrmgt_cpu_pcap_t {
    uint16_t count;    /**< the firmware's count; only the low byte is ever written */
    uint16_t cap_w[8]; /**< caps of sockets 1 to 8, watts */
} pwrmgt_cpu_pcap_t;

/** One temperature reading. 4 bytes. */
typedef struct thermal_hist_entry_t {
    uint8_t type;     /**< `Type`: 1 = ambient, 2 = processor, 3 = memory module, 4 = exhaust */
    uint8_t instance; /**< `InstNum`: 1-based within its type */
    int16_t value;    /**< `Value`: degrees Celsius */
} thermal_hist_entry_t;

/**
 * Readings of one time. The head of a longer record: `count` entries follow one
 * another from byte 6 on. 12 bytes; two bytes of alignment at the end.
 */
typedef struct thermal_hist_update_t {
    uint32_t timestamp;              /**< time of the readings, seconds; 0 is invalid */
    uint16_t count;                  /**< number of entries; 0 is invalid */
    thermal_hist_entry_t entries[1]; /**< the first of `count` entries */
} thermal_hist_update_t;

/** Temperatures of one sensor group in one index, degrees Celsius; -1 = no reading. 6 bytes. */
typedef struct pwrmgt_therm_triple_t {
    int16_t max; /**< highest reading */
    int16_t avg; /**< mean; its sum is kept in 16 bits */
    int16_t min; /**< lowest reading */
} pwrmgt_therm_triple_t;

/**
 * One index of a thermal history. 128 bytes; two bytes of alignment follow `index`.
 * What was not written reads as 0xFF bytes.
 */
typedef struct pwrmgt_therm_sample_t {
    uint16_t index;                   /**< index number + 1; 65535 = never reached */
    uint32_t tm;                      /**< end of the index, seconds; 4294967295 = not set */
    pwrmgt_therm_triple_t cpu[8];     /**< processors 1 to 8 */
    pwrmgt_therm_triple_t memory[8];  /**< memory modules of sockets 1 to 8 */
    pwrmgt_therm_triple_t ambient[2]; /**< inlet sensors 1 and 2 */
    pwrmgt_therm_triple_t exhaust[2]; /**< exhaust sensors 1 and 2 */
} pwrmgt_therm_sample_t;

/** The latest temperatures, degrees Celsius. 296 bytes. Only sensors with a row are written. */
typedef struct pwrmgt_therm_realtime_t {
    uint8_t lead[8];     /**< never written by the library */
    int16_t cpu[8];      /**< processors 1 to 8 */
    int16_t memory[128]; /**< memory modules 1 to 128 */
    int16_t ambient[8];  /**< inlet sensors 1 to 8 */
} pwrmgt_therm_realtime_t;

/* ------------------------------------------------------------------------
 * Globals
 * ------------------------------------------------------------------------ */

/**
 * This process's copy of the policy row's `IsBlade`; 255 until the row was read.
 *
 * Set by the first successful pwrmgt_get_pwrpolicy_tbl(). 2 makes the support
 * gate refuse. A change made by another process is not seen.
 */
extern PWRMGT_API uint8_t g_power_policy_flag;

/**
 * The installed supply type, property "/ac/tavn/power/psu_installed"; 15 until it
 * was read (a 15 that was read is read again next time).
 */
extern PWRMGT_API uint32_t g_psu_installed;

/**
 * The supply configuration code, property "/ac/tavn/power/psu_config_info"; 255
 * until it was read. 8 and 12 are the layouts with two domains.
 */
extern PWRMGT_API uint8_t g_psu_config_info;

/** The default redundancy mode per hardware configuration; a program may change rows. */
extern PWRMGT_API pwrmgt_redun_mode_map_t default_redun_mode_map[PWRMGT_REDUN_MODE_ROWS];

/* ------------------------------------------------------------------------
 * Database session
 * ------------------------------------------------------------------------ */

/**
 * A connection to `vek_pwr_db` on the local server, user "root".
 *
 * @return the connection, 0 when the database did not open
 *
 * The caller closes it with vek_db_close().
 */
PWRMGT_API uint32_t pwrmgt_get_db_handle(void);

/* ------------------------------------------------------------------------
 * Power history: writers
 *
 * `db` is an open connection of the caller's; it is used and never closed.
 * ------------------------------------------------------------------------ */

/**
 * Stores the latest reading as the one row of `RealTimePowersMem` (`_id` 0).
 *
 * @param db         open connection
 * @param reading    the reading; its two leading words are not stored
 * @param timestamp  when it was taken, seconds
 * @retval 0   the row was inserted or replaced
 * @retval 3   the table could not be queried
 * @retval 31  the table holds more than one row; nothing was written
 * @retval 4   inserting the first row failed
 * @retval 5   replacing the row failed
 */
PWRMGT_API uint32_t pwrmgt_update_realtime_table(uint32_t db, pwrmgt_realtime_pwr_t reading,
                                                 uint32_t timestamp);

/**
 * Puts the columns of an empty slot into a content: `Timestamp` 0, every power
 * column 65535, every percentage 255.
 *
 * @param content  content of the database client
 * @return what the last put returned, 0 for success
 */
PWRMGT_API uint32_t pwrmgt_prep_empty_hist_sample(uint32_t content);

/**
 * Puts the columns of a slot's sample into a content: `Timestamp` 0, twenty
 * power columns, six percentages.
 *
 * @param content  content of the database client
 * @param sample   the slot's values
 * @return what the last put returned, 0 for success
 */
PWRMGT_API uint32_t pwrmgt_prep_valid_hist_sample(uint32_t content, pwrmgt_hist_sample_t sample);

/**
 * Appends one slot to `HistPowers24HrMem`.
 *
 * @param db         open connection
 * @param id         ring slot, 0..2879; stored as it is
 * @param timestamp  start of the slot, seconds, above 0
 * @param sample     the slot's values
 * @retval 0  stored
 * @retval 1  `db` is 0, or `timestamp` is 0 or negative; nothing is written
 * @retval 7  no content could be made
 * @return otherwise the client's own result of the insert, unchanged
 *
 * Queries find a row only on the 30-second grid counted back from the newest
 * row, so stamps are multiples of 30 and no stamp is written twice.
 */
PWRMGT_API uint32_t pwrmgt_update_hist_table(uint32_t db, uint16_t id, int32_t timestamp,
                                             pwrmgt_hist_sample_t sample);

/**
 * Prepares the power history at daemon start: trims `HistPowers24Hr` to the
 * last 24 hours, empties `HistPowers24HrMem` and fills it from `HistPowers24Hr`.
 *
 * @param db              open connection
 * @param now             current time, seconds; up to 86400 nothing is trimmed
 * @param last_id         [out] `_id` of the row with the highest slot
 * @param last_timestamp  [out] `Timestamp` of that row
 * @retval 0  done; without any row both outputs are untouched
 * @retval 1  `db` is 0
 * @retval 6  the trim or the truncate failed
 * @retval 4  the copy failed
 * @retval 3  the filled table could not be queried
 *
 * Rows stamped before `now` - 86400 or at or after `now` are trimmed. On a full
 * ring the highest slot is not the newest row. What was done before a failure
 * stays done.
 */
PWRMGT_API uint32_t pwrmgt_init_hist_table(uint32_t db, int32_t now, int32_t* last_id,
                                           int32_t* last_timestamp);

/**
 * Fills `HistPowers24HrMem` afresh from `HistPowers24Hr`, trimming nothing.
 *
 * @param db  open connection; not tested
 * @return the client's results of the delete and of the copy, ORed; 0 when both
 *         succeeded. The copy runs even when the delete failed.
 */
PWRMGT_API uint32_t pwrmgt_load_hist_bak_table(uint32_t db);

/**
 * Trims `HistPowers24HrMem`, then `HistPowers24Hr`, to the last 24 hours.
 *
 * @param db   open connection
 * @param now  current time, seconds; below 86401 nothing is trimmed
 * @retval 0  done
 * @retval 1  `db` is 0
 * @retval 6  a delete failed; the second table is then not tried
 *
 * A row stamped `now` - 86400 stays; a row stamped `now` or later goes.
 */
PWRMGT_API uint32_t pwrmgt_cleanup_hist_mem_table(uint32_t db, int32_t now);

/**
 * Copies working rows above the highest saved slot into `HistPowers24Hr`.
 *
 * @param db          open connection; not tested
 * @param last_saved  [out] highest `_id` of `HistPowers24Hr` before the copy; 0
 *                    when that table is empty
 * @retval 0  done
 * @retval 6  the saved rows could not be selected; `*last_saved` is 0
 * @retval 4  the copy failed
 *
 * Slot 0 is never copied to an empty table, and rows of a ring that has wrapped
 * are not seen; pwrmgt_update_hist_persist_db() saves slots exactly.
 */
PWRMGT_API uint32_t pwrmgt_save_hist_mem_table(uint32_t db, int32_t* last_saved);

/**
 * Saves consecutive ring slots: each is deleted from `HistPowers24Hr` and copied
 * there from `HistPowers24HrMem`.
 *
 * @param db     open connection
 * @param first  first slot, 0 or above; 2880 and above mean slot 0
 * @param count  number of slots, 1..2880; after slot 2879 comes slot 0
 * @retval 0  the last slot was saved
 * @retval 3  `db` is 0, `first` is negative, or `count` is out of range
 * @return otherwise the client's results of the last delete and the last copy,
 *         ORed. Earlier failures are not reported and stop nothing.
 */
PWRMGT_API uint32_t pwrmgt_update_hist_persist_db(uint32_t db, int32_t first, uint32_t count);

/**
 * Prepares the history of supplies 5 to 12 at daemon start, as
 * pwrmgt_init_hist_table() does for the main one, without reading a last row.
 *
 * @param db   open connection
 * @param now  current time, seconds; up to 86400 nothing is trimmed
 * @retval 0  done
 * @retval 1  `db` is 0
 * @retval 6  the trim or the truncate failed
 * @return otherwise the client's own result of the copy, unchanged
 */
PWRMGT_API uint32_t pwrmgt_init_hist_extra_table(uint32_t db, int32_t now);

/**
 * Appends one slot of supplies 5 to 12 to `HistExtraPowers24HrMem`.
 *
 * @param db         open connection
 * @param id         ring slot, 0..2879; stored as it is
 * @param timestamp  start of the slot, seconds, above 0
 * @param sample     the slot's values
 * @retval 0  stored
 * @retval 1  `db` is 0, or `timestamp` is 0 or negative; nothing is written
 * @retval 7  no content could be made
 * @return otherwise the client's own result of the insert, unchanged
 */
PWRMGT_API uint32_t pwrmgt_update_hist_extra_table(uint32_t db, uint16_t id, int32_t timestamp,
                                                   pwrmgt_hist_extra_sample_t sample);

/**
 * Trims `HistExtraPowers24HrMem`, then `HistExtraPowers24Hr`, to the last 24
 * hours, as pwrmgt_cleanup_hist_mem_table() does for the main history.
 *
 * @param db   open connection
 * @param now  current time, seconds; below 86401 nothing is trimmed
 * @retval 0  done
 * @retval 1  `db` is 0
 * @retval 6  a delete failed; the second table is then not tried
 */
PWRMGT_API uint32_t pwrmgt_cleanup_extra_hist_mem_table(uint32_t db, int32_t now);

/**
 * Copies working rows above a slot number into `HistExtraPowers24Hr`.
 *
 * @param db          open connection; not tested
 * @param last_saved  slot number above which rows are copied; the caller keeps it
 * @retval 0  done
 * @retval 4  the copy failed
 *
 * With 0 every row but slot 0 is copied. On a ring that has wrapped, rows that
 * are saved already are copied once more.
 */
PWRMGT_API uint32_t pwrmgt_save_extra_hist_mem_table(uint32_t db, int32_t last_saved);

/**
 * Appends one row to the processor history, `HistCpuPowersMem`.
 *
 * @param db      open connection
 * @param sample  slot number, time and power of eight processors; a time of 0 is
 *                stored like any other
 * @retval 0  stored
 * @retval 1  `db` is 0
 * @retval 7  no content could be made
 * @return otherwise the client's own result of the insert, unchanged
 */
PWRMGT_API uint32_t pwrmgt_update_cpu_pwr_hist_table(uint32_t db, pwrmgt_cpu_pwr_sample_t sample);

/**
 * Trims `HistCpuPowersMem` to the last 600 seconds.
 *
 * @param db   open connection
 * @param now  current time, seconds; below 601 nothing is trimmed
 * @retval 0  done
 * @retval 1  `db` is 0
 * @retval 6  the delete failed
 *
 * Rows stamped `now` - 600 and `now` stay.
 */
PWRMGT_API uint32_t pwrmgt_cleanup_cpu_pwr_hist_table(uint32_t db, uint32_t now);

/* ------------------------------------------------------------------------
 * Power history: windows and period arithmetic
 * ------------------------------------------------------------------------ */

/**
 * Where the window of a by-period query starts: one entry's width after the
 * point one period back, which is cut to a whole minute.
 *
 * @param period  0 = last hour, 1 = 6 h, 2 = 12 h, 3 = 24 h
 * @param now     current time, seconds, above 0
 * @param count   entries wanted, 0..120; 0 adds no width
 * @param oldest  [out] start of the window, seconds
 * @retval 0   written
 * @retval 1   `oldest` is null, or `now` is 0 or negative
 * @retval 10  `period` above 3, or `count` above 120
 */
PWRMGT_API uint32_t pwrmgt_oldest_ts_per_period(uint32_t period, int32_t now, uint32_t count,
                                                uint32_t* oldest);

/**
 * The clauses that select one period up to now, newest first.
 *
 * @param order   [out] ordering clause, at least 32 bytes: "Timestamp DESC"
 * @param filter  [out] filter clause, at least 256 bytes
 * @param period  0 = last hour, 1 = 6 h, 2 = 12 h, 3 = 24 h
 * @param count   entries wanted, 0..120
 * @retval 0   both written
 * @retval 1   `filter` or `order` is null, or the clock reads 0
 * @retval 31  the clock reads below 0
 * @retval 10  `period` above 3, or `count` above 120
 *
 * No size is passed: the texts are copied whole. Untouched on failure.
 */
PWRMGT_API uint32_t pwrmgt_hist_query_string(char* order, char* filter, uint32_t period,
                                             uint32_t count);

/**
 * The clauses that select the last `minutes` minutes, newest first.
 *
 * @param order        [out] ordering clause
 * @param order_size   bytes in `order`; a longer text is cut
 * @param filter       [out] filter clause
 * @param filter_size  bytes in `filter`; a longer text is cut
 * @param minutes      length of the window; any value
 * @retval 0   both written
 * @retval 1   `filter` or `order` is null
 * @retval 31  the clock reads below 0
 *
 * The start is cut to a multiple of 30 seconds and never equals the end.
 */
PWRMGT_API uint32_t pwrmgt_duration_summary_query_string(char* order, uint32_t order_size,
                                                         char* filter, uint32_t filter_size,
                                                         int32_t minutes);

/**
 * Stored samples that fold into one entry of a by-period query.
 *
 * @param period  period code
 * @return 6, 12 or 24 for codes 1, 2 and 3; 1 for any other code
 */
PWRMGT_API uint32_t pwrmgt_get_samples_perIndex(uint32_t period);

/* ------------------------------------------------------------------------
 * Power history: sample readers
 *
 * A reader walks the 30-second grid back from the newest row of an open query
 * result (newest first) and folds `samples_per_entry` slots into each entry. A
 * row off the grid is never matched and hides every older row. A reader frees
 * nothing: the result stays the caller's. On a failing step it returns 0 at
 * once; entries filled before stay filled, the current one is partly written.
 * ------------------------------------------------------------------------ */

/**
 * Folds system, processor or memory power.
 *
 * @param result             open result: `Timestamp`, then three columns (avg,
 *                           max, min) or, for domain 0, six (DC, then AC)
 * @param count              entries wanted; negative counts as 0
 * @param samples_per_entry  slots per entry; 0 marks every entry 65535
 * @param entries            [out] `count` records; null counts as no entries
 * @param domain             0 reads and fills the second group; any other value
 *                           leaves it untouched
 * @return 1 when at least one slot was valid, else 0 (null or empty result and
 *         failed steps too)
 *
 * A slot is valid when its first group has no 65535; the second group is not
 * tested.
 */
PWRMGT_API int32_t pwrmgt_get_powerSamples(uint32_t result, int32_t count,
                                           uint32_t samples_per_entry,
                                           pwrmgt_hist_pwr_sample_t* entries,
                                           pwrmgt_pwr_domain domain);

/**
 * Folds one supply's AC and DC power.
 *
 * @param result             open result: `Timestamp`, AC average, DC average
 * @param count              entries wanted; negative counts as 0
 * @param samples_per_entry  slots per entry; 0 marks every entry 65535
 * @param entries            [out] `count` records; null counts as no entries
 * @return 1 when at least one slot was valid, else 0
 *
 * A slot is valid when both values are below 65535. Sums are kept in 16 bits and
 * wrap before the division.
 */
PWRMGT_API int32_t pwrmgt_get_psuPowerSamples(uint32_t result, int32_t count,
                                              uint32_t samples_per_entry,
                                              pwrmgt_hist_psu_sample_t* entries);

/**
 * Folds the performance percentages.
 *
 * @param result             open result: `Timestamp`, `SysAvgPtg`, `SysMaxPtg`,
 *                           `SysMinPtg`, `CpuAvgPtg`, `MemAvgPtg`, `IOAvgPtg`
 * @param count              entries wanted; negative counts as 0
 * @param samples_per_entry  slots per entry; 0 marks every entry 255
 * @param entries            [out] `count` records; null counts as no entries
 * @return 1 when at least one slot was valid, else 0
 *
 * A slot is valid when all six values are below 255. Sums are kept in 16 bits.
 */
PWRMGT_API int32_t pwrmgt_get_perfSample_perIndex(uint32_t result, int32_t count,
                                                  uint32_t samples_per_entry,
                                                  pwrmgt_hist_perf_sample_t* entries);

/* ------------------------------------------------------------------------
 * Power history: queries by period
 *
 * Each opens and closes its own connection; there is nothing to free.
 * ------------------------------------------------------------------------ */

/**
 * Power of the system, the processors or the memory over a past period, newest
 * entry first. From `HistPowers24HrMem`.
 *
 * @param domain   0 = system (DC and AC), 1 = processors, 2 = memory
 * @param period   0 = last hour, 1 = 6 h, 2 = 12 h, 3 = 24 h
 * @param entries  [out] caller's array of `count` records
 * @param count    entries wanted, 0..120; at 120 an entry covers 30 s, 3, 6 or
 *                 12 minutes
 * @retval 0   filled; at least one entry holds a reading
 * @retval 1   `entries` is null
 * @retval 10  `count` above 120, or not offered on this platform
 * @retval 2   the database did not open
 * @retval 31  `period` above 3, or the clock failed
 * @retval 3   `domain` above 2, or the query failed
 * @retval 8   nothing recorded in the period (entries untouched), no valid
 *             reading (entries written), or a failing step (partly written)
 */
PWRMGT_API uint32_t pwrmgt_get_history_power(pwrmgt_pwr_domain domain, uint32_t period,
                                             pwrmgt_hist_pwr_sample_t* entries, uint32_t count);

/**
 * AC and DC power of one supply over a past period, newest entry first. From
 * `HistPowers24HrMem` (bays 1 to 4) or `HistExtraPowers24HrMem` (bays 5 to 12).
 *
 * @param psu      bay number, 1..12
 * @param period   0 = last hour, 1 = 6 h, 2 = 12 h, 3 = 24 h
 * @param entries  [out] caller's array of `count` records
 * @param count    entries wanted, 0..120
 * @retval 0   filled; at least one entry holds a reading
 * @retval 1   `entries` is null
 * @retval 10  `count` above 120, or not offered on this platform
 * @retval 2   the database did not open
 * @retval 31  `period` above 3, or the clock failed
 * @retval 3   no such bay, or the query failed
 * @retval 8   nothing recorded in the period (entries untouched), no valid
 *             reading (entries written), or a failing step (partly written)
 */
PWRMGT_API uint32_t pwrmgt_get_history_psu_powers(uint32_t psu, uint32_t period,
                                                  pwrmgt_hist_psu_sample_t* entries,
                                                  uint32_t count);

/**
 * Utilisation percentages over a past period, newest entry first. From
 * `HistPowers24HrMem`.
 *
 * @param period   0 = last hour, 1 = 6 h, 2 = 12 h, 3 = 24 h
 * @param entries  [out] caller's array of `count` records
 * @param count    entries wanted, 0..120
 * @retval 0   filled; at least one entry holds a reading
 * @retval 1   `entries` is null
 * @retval 10  `count` above 120, or not offered on this platform
 * @retval 2   the database did not open
 * @retval 31  `period` above 3, the clock failed, or nothing recorded in the
 *             period (entries untouched)
 * @retval 3   the query failed
 * @retval 8   no valid reading (entries written), or a failing step (partly written)
 */
PWRMGT_API uint32_t pwrmgt_get_history_performance(uint32_t period,
                                                   pwrmgt_hist_perf_sample_t* entries,
                                                   uint32_t count);

/* ------------------------------------------------------------------------
 * Power history: queries by time window
 *
 * The window ends at `end_time` and reaches back `minutes`, its start cut to a
 * multiple of 30 seconds. Entries = 2 * `minutes` / `samples_per_entry`, cut to a
 * whole number; negative `minutes` make none. The grid starts at the newest row
 * inside the window. Each query opens and closes its own connection.
 * ------------------------------------------------------------------------ */

/**
 * Power of the system, the processors or the memory in a window, newest entry
 * first. From `HistPowers24HrMem`.
 *
 * @param domain             0 = system (DC and AC), 1 = processors, 2 = memory
 * @param end_time           end of the window, seconds
 * @param minutes            length of the window, at most 1440
 * @param samples_per_entry  30-second slots per entry, 1..24
 * @param entries            [out] caller's array, one record per entry: 2880 hold any window
 * @param count_out          [out] number of entries; stored once the rows were
 *                           selected, data or not
 * @retval 0   filled; at least one entry holds a reading
 * @retval 1   `entries` is null
 * @retval 10  not offered on this platform
 * @retval 11  `samples_per_entry` outside 1..24, or `minutes` above 1440
 * @retval 2   the database did not open
 * @retval 3   `domain` above 2, or the query failed
 * @retval 8   nothing recorded in the window (entries untouched), no valid
 *             reading (entries written), or no entries
 */
PWRMGT_API uint32_t pwrmgt_get_history_power_by_tm(pwrmgt_pwr_domain domain, int32_t end_time,
                                                   int32_t minutes, int32_t samples_per_entry,
                                                   pwrmgt_hist_pwr_sample_t* entries,
                                                   uint32_t* count_out);

/**
 * AC and DC power of one supply in a window, newest entry first. From
 * `HistPowers24HrMem` (bays 1 to 4) or `HistExtraPowers24HrMem` (bays 5 to 12).
 *
 * @param psu                bay number, 1..12
 * @param end_time           end of the window, seconds
 * @param minutes            length of the window, at most 1440
 * @param samples_per_entry  30-second slots per entry, 1..24
 * @param entries            [out] caller's array, one record per entry
 * @param count_out          [out] number of entries, as in
 *                           pwrmgt_get_history_power_by_tm()
 * @retval 0   filled; at least one entry holds a reading
 * @retval 1   `entries` is null
 * @retval 10  not offered on this platform
 * @retval 11  `samples_per_entry` outside 1..24, or `minutes` above 1440
 * @retval 8   a bay above what the machine has; later: nothing recorded in the
 *             window, no valid reading, or no entries
 * @retval 2   the database did not open
 * @retval 3   no such bay, or the query failed
 *
 * The machine's number of bays is the byte property
 * "/dc/tavn/dm/planar/0/psu/maxcount". Unreadable or 4: bays above 4 end with 8.
 * 2: bays above 3 do. Any other number bounds nothing. An empty window writes
 * every entry as missing here.
 */
PWRMGT_API uint32_t pwrmgt_get_history_psu_power_by_tm(int32_t psu, int32_t end_time,
                                                       int32_t minutes, int32_t samples_per_entry,
                                                       pwrmgt_hist_psu_sample_t* entries,
                                                       uint32_t* count_out);

/**
 * Utilisation percentages in a window, newest entry first. From
 * `HistPowers24HrMem`.
 *
 * @param end_time           end of the window, seconds
 * @param minutes            length of the window, at most 1440
 * @param samples_per_entry  30-second slots per entry, 1..24
 * @param entries            [out] caller's array, one record per entry
 * @param count_out          [out] number of entries, as in
 *                           pwrmgt_get_history_power_by_tm()
 * @retval 0   filled; at least one entry holds a reading
 * @retval 1   `entries` is null
 * @retval 10  not offered on this platform
 * @retval 11  `samples_per_entry` outside 1..24, or `minutes` above 1440
 * @retval 2   the database did not open
 * @retval 3   the query failed
 * @retval 8   nothing recorded in the window, no valid reading, or no entries
 *
 * An empty window writes every entry as missing.
 */
PWRMGT_API uint32_t pwrmgt_get_history_performance_by_tm(int32_t end_time, int32_t minutes,
                                                         int32_t samples_per_entry,
                                                         pwrmgt_hist_perf_sample_t* entries,
                                                         uint32_t* count_out);

/* ------------------------------------------------------------------------
 * Processor power history
 *
 * Rows of `HistCpuPowersMem` as they are, newest first: no grid, no folding, no
 * support gate. The window is the last 90 + 30 * `count` seconds. Each query
 * opens and closes its own connection.
 * ------------------------------------------------------------------------ */

/**
 * The newest rows of one processor or of all.
 *
 * @param cpu      1..8 = one processor, 255 = all
 * @param entries  [out] `count` records: pwrmgt_hist_cpu_pwr_t for one processor,
 *                 pwrmgt_hist_entire_cpu_pwr_t for all
 * @param count    rows wanted, 0..20
 * @retval 0   filled; entries beyond the last row are zeroed
 * @retval 1   `entries` is null
 * @retval 10  `cpu` is neither 1..8 nor 255, or `count` above 20
 * @retval 2   the database did not open
 * @retval 3   the query failed
 * @retval 8   no row in the window; entries untouched
 */
PWRMGT_API uint32_t pwrmgt_get_cpu_power_per_index(uint32_t cpu, void* entries, uint32_t count);

/** As pwrmgt_get_cpu_power_per_index(). */
PWRMGT_API uint32_t pwrmgt_get_history_cpu_power(uint32_t cpu, void* entries, uint32_t count);

/** As pwrmgt_get_cpu_power_per_index() with all processors. */
PWRMGT_API uint32_t pwrmgt_get_history_entire_cpu_power(pwrmgt_hist_entire_cpu_pwr_t* entries,
                                                        uint32_t count);

/** As pwrmgt_get_cpu_power_per_index() for one row, of the last 120 seconds. */
PWRMGT_API uint32_t pwrmgt_get_latest_cpu_power(uint32_t cpu, void* entries);

/** As pwrmgt_get_cpu_power_per_index() for one row of all processors, of the last 120 seconds. */
PWRMGT_API uint32_t pwrmgt_get_latest_entire_cpu_power(pwrmgt_hist_entire_cpu_pwr_t* entries);

/* ------------------------------------------------------------------------
 * Power policy and support gate
 * ------------------------------------------------------------------------ */

/**
 * The support gate: may a power function go on here?
 *
 * @param name  the asking function's exported name, or "" for one that is never
 *              offered on the quoril platform; null is ""
 * @retval 0  go on
 * @retval 1  unsupported: the quoril platform and a name that
 *            judge_power_function() does not know, or the policy row's `IsBlade`
 *            is 2
 *
 * Reads the policy row (with a connection of its own) only while
 * #g_power_policy_flag is 255. A row that cannot be read never refuses.
 */
PWRMGT_API uint32_t pwrmgt_unsupport_check(const char* name);

/**
 * The stored power policy. From `PowerPolicy`, first row.
 *
 * @param out  [out] the policy; untouched unless 0 is returned
 * @retval 0  filled
 * @retval 1  `out` is null
 * @retval 2  the database did not open
 * @retval 3  the query failed
 * @retval 8  the table holds no row
 *
 * A field whose column cannot be read keeps what the caller had in it, and 0 is
 * returned all the same: reading the row itself is not tested.
 *
 * Copies `is_blade` to #g_power_policy_flag while that is 255. Opens and closes
 * its own connection.
 */
PWRMGT_API uint32_t pwrmgt_get_pwrpolicy_tbl(pwrmgt_power_policy_t* out);

/**
 * Writes a whole policy record into the policy row. To `PowerPolicy`, `_id` 0.
 *
 * @param policy  the record; the three unstress columns keep their values
 * @retval 0   written; on an empty table nothing is, and that is no error
 * @retval 2   the database did not open
 * @retval 3   the query failed
 * @retval 31  the table holds more than one row with `_id` 0
 * @retval 7   no content could be made
 * @retval 5   the update failed
 *
 * On success #g_power_policy_flag becomes the record's `is_blade`. Opens and
 * closes its own connection.
 */
PWRMGT_API uint32_t pwrmgt_update_power_policy_table(pwrmgt_power_policy_t policy);

/**
 * Makes the policy row with its defaults, or reads the row that is there.
 *
 * @param db          open connection; stays the caller's
 * @param out         [out] the policy now stored
 * @param is_blade    `IsBlade` of a new row (low 8 bits)
 * @param redun_mode  `RedunMode` of a new row, 0..4; above 4 it becomes 15 when
 *                    `is_blade` is non-zero, else 1
 * @retval 0  `out` holds the stored row
 * @retval 3  the query failed; `out` is untouched
 * @retval 7  no content could be made; `out` holds the defaults
 * @retval 4  the insert failed; `out` holds the defaults
 *
 * A stored row wins over the arguments and is not changed. Does not touch
 * #g_power_policy_flag.
 */
PWRMGT_API uint32_t pwrmgt_init_power_policy_table(uint32_t db, pwrmgt_power_policy_t* out,
                                                   uint32_t is_blade, uint32_t redun_mode);

/* ------------------------------------------------------------------------
 * Power capping
 *
 * The firmware enforces the cap; these functions send and read it, network
 * function 0x3A. A failed exchange (31) is one that was not sent, whose
 * completion code is not 0, or whose answer has not the length named.
 * ------------------------------------------------------------------------ */

/**
 * Sets the power cap (command 0x32, operation 0x02; 2 bytes of answer).
 *
 * @param enable  1 = capping on
 * @param mode    the firmware's meaning
 * @param value   cap, watts; not 0 while `enable` is 1
 * @retval 0   accepted
 * @retval 15  `enable` is 1 and `value` 0
 * @retval 10  not offered on this platform
 * @retval 31  the exchange failed
 * @retval 14  the firmware answered with a status other than 0
 */
PWRMGT_API uint32_t pwrmgt_set_power_capping_policy(uint8_t enable, uint8_t mode, uint16_t value);

/**
 * As pwrmgt_set_power_capping_policy(), with the requester's name for the
 * firmware's audit log.
 *
 * @param name  at most 64 characters; a longer name is left out, and the firmware
 *              told so; null sends no name at all
 */
PWRMGT_API uint32_t pwrmgt_set_power_capping_policy_auditlog(uint8_t enable, uint8_t mode,
                                                             uint16_t value, const char* name);

/**
 * The cap that is in force (command 0x32, operation 0x03; 6 bytes of answer).
 *
 * @param enable  [out] 1 = capping on
 * @param mode    [out] the firmware's meaning
 * @param value   [out] cap, watts
 * @retval 0   all three written
 * @retval 1   a pointer is null
 * @retval 10  not offered on this platform
 * @retval 31  the exchange failed
 * @retval 14  the firmware answered with a status other than 0
 */
PWRMGT_API uint32_t pwrmgt_get_power_capping_policy(uint8_t* enable, uint8_t* mode,
                                                    uint16_t* value);

/** As pwrmgt_get_power_capping_policy(), without asking the support gate. */
PWRMGT_API uint32_t pwrmgt_ipmi_get_pwr_capping(uint8_t* enable, uint8_t* mode, uint16_t* value);

/**
 * Sets a GPU's cap (command 0x06).
 *
 * @param gpu    GPU index
 * @param kind   16: 16-bit value; 32: the low byte of `value`
 * @param value  the cap
 * @retval 0   done
 * @retval 10  `kind` is neither 16 nor 32; nothing was sent
 * @retval 31  the exchange failed, whatever the answer's length
 */
PWRMGT_API uint32_t pwrmgt_set_gpu_power_capping_policy(uint8_t gpu, int32_t kind, uint16_t value);

/**
 * A GPU's cap (command 0x06).
 *
 * @param gpu    GPU index
 * @param kind   16 or 32
 * @param value  [out] kind 16: the cap, 65535 when the firmware says 0. Kind 32:
 *               only the low byte is written
 * @retval 0   written
 * @retval 10  `kind` is neither 16 nor 32; nothing was sent
 * @retval 31  the exchange failed, whatever the answer's length
 */
PWRMGT_API uint32_t pwrmgt_get_gpu_power_capping_policy(uint8_t gpu, int32_t kind, uint16_t* value);

/**
 * The stored policy, its limits widened by the unstress powers. From
 * `PowerPolicy`.
 *
 * @param out  [out] the policy; untouched unless 0 is returned
 * @retval 0  filled
 * @retval 1  `out` is null
 * @retval 2  the database did not open
 * @retval 3  the query failed
 * @retval 8  the table holds no row
 *
 * The sum of both unstress powers is added to each of the four minimum and
 * maximum limits that is set, while the adapter's is at most 549 W and the disks'
 * below 352 W. Asks no gate and leaves #g_power_policy_flag alone.
 */
PWRMGT_API uint32_t pwrmgt_get_power_policy_extra_pwr(pwrmgt_power_policy_t* out);

/**
 * The stored policy with the firmware's live cap and widened limits.
 *
 * @param out  [out] the policy; untouched unless 0 is returned
 * @retval 0  filled
 * @retval 1  `out` is null
 * @retval 2  the database did not open
 * @retval 3  the query failed
 * @retval 8  the table holds no row
 *
 * Without an answer of the firmware the cap reads as off, mode 0, 65535 W. Here a
 * minimum is widened with its maximum: only when the maximum is set, and then
 * whether or not it is set itself.
 */
PWRMGT_API uint32_t pwrmgt_get_power_policy_setting(pwrmgt_power_policy_t* out);

/* ------------------------------------------------------------------------
 * Live readings of the firmware
 *
 * One exchange each, network function 0x3A; no connection. Outputs are untouched
 * unless 0 is returned.
 * ------------------------------------------------------------------------ */

/**
 * The power reading that the firmware gives now (command 0x32, operation 0x01).
 *
 * @param out  [out] the reading; `lead0` is never written
 * @retval 0   filled
 * @retval 1   `out` is null
 * @retval 10  not offered on this platform
 * @retval 31  the exchange failed: not sent, completion code not 0, or not
 *             exactly 17 bytes
 */
PWRMGT_API uint32_t pwrmgt_get_realtime_powers(pwrmgt_realtime_pwr_t* out);

/**
 * Powers of slot devices (command 0x32, operation 0x04 0x08).
 *
 * @param out  [out] the values in the firmware's order
 * @retval 0   filled
 * @retval 1   `out` is null
 * @retval 10  not offered on this platform
 * @retval 31  the exchange failed: not sent, completion code not 0, or not
 *             exactly 15 bytes
 */
PWRMGT_API uint32_t pwrmgt_get_realtime_slot_dev_powers(pwrmgt_slot_dev_pwr_t* out);

/**
 * The raw power-meter block (command 0x32, operation 0x04).
 *
 * @param out  [out] caller's 256 bytes; gets as many as the firmware answered, its
 *             completion code 0 first
 * @retval 0   filled
 * @retval 1   `out` is null
 * @retval 31  the exchange failed: not sent, or completion code not 0
 *
 * Prints one line on standard output, whatever the outcome.
 */
PWRMGT_API uint32_t pwrmgt_get_power_fpga_meter(uint8_t* out);

/**
 * What one GPU draws (command 0xDB).
 *
 * @param gpu  GPU index
 * @param out  [out] watts
 * @retval 0   written
 * @retval 31  the exchange failed: not sent, or completion code not 0
 */
PWRMGT_API uint32_t pwrmgt_get_gpu_power_consumption(uint8_t gpu, uint16_t* out);

/* ------------------------------------------------------------------------
 * Policy settings
 * ------------------------------------------------------------------------ */

/**
 * The maximizer status. From `PowerPolicy`, `MaximStatus`.
 *
 * @param status  [out] the firmware's meaning
 * @retval 0   written
 * @retval 1   `status` is null
 * @retval 10  not offered on this platform
 * @retval 2   the database did not open
 * @retval 3   the query failed
 * @retval 8   the table holds no row
 */
PWRMGT_API uint32_t pwrmgt_get_power_maximzer_status(uint8_t* status);

/**
 * Stores the maximizer status in every row of `PowerPolicy`; a status that is
 * stored already is not written.
 *
 * @param status  the firmware's meaning
 * @retval 0  stored
 * @retval 2  the database did not open
 * @retval 3  the query failed
 * @retval 8  the table holds no row
 * @retval 7  no content could be made
 * @retval 5  the update failed
 */
PWRMGT_API uint32_t pwrmgt_set_maximzer_status(uint8_t status);

/**
 * The unstress power of adapters. From `PowerPolicy`, `UnstressAdapterPwr`.
 *
 * @param watts  [out] watts
 * @retval 0  written
 * @retval 2  the database did not open
 * @retval 3  the query failed
 * @retval 8  the table holds no row
 */
PWRMGT_API uint32_t pwrmgt_get_unstress_adapter_power(uint16_t* watts);

/** As pwrmgt_get_unstress_adapter_power(), of disks. From `UnstressHddPwr`. */
PWRMGT_API uint32_t pwrmgt_get_unstress_hdd_power(uint16_t* watts);

/**
 * Stores the unstress power of adapters in every row of `PowerPolicy`; a value
 * that is stored already is not written.
 *
 * @param watts  watts
 * @retval 0  stored
 * @retval 2  the database did not open, for writing or for reading
 * @retval 3  the stored value could not be queried
 * @retval 8  the table holds no row
 * @retval 7  no content could be made
 * @retval 5  the update failed
 *
 * Holds a second connection while it reads the stored value.
 */
PWRMGT_API uint32_t pwrmgt_set_unstress_adapter_power(uint16_t watts);

/** As pwrmgt_set_unstress_adapter_power(), of disks. To `UnstressHddPwr`. */
PWRMGT_API uint32_t pwrmgt_set_unstress_hdd_power(uint16_t watts);

/**
 * Sets the supplies' zero-output mode (network function 0x3A, command 0x32,
 * operation 0x06 0x01 0x01).
 *
 * @param mode  0 or 1
 * @retval 20  `mode` above 1; nothing was sent
 * @return otherwise the transport's own result, 0 when the request was sent; the
 *         answer is not looked at
 */
PWRMGT_API uint32_t pwrmgt_set_zero_output_mode(uint8_t mode);

/**
 * The supplies' zero-output mode (operation 0x06 0x01 0x00).
 *
 * @param mode  [out] written when the exchange took place and its completion code
 *              is 0
 * @return the transport's own result; 0 also when the completion code is not
 */
PWRMGT_API uint32_t pwrmgt_get_zero_output_mode(uint8_t* mode);

/**
 * The processors' power caps (operation 0x09).
 *
 * @param caps  [out] count (its low byte only) and eight caps
 * @retval 0   filled
 * @retval 1   `caps` is null
 * @retval 31  an answer of exactly 19 bytes; any other length is taken
 * @return otherwise the transport's own result, or the completion code
 */
PWRMGT_API uint32_t pwrmgt_get_cpu_pcap(pwrmgt_cpu_pcap_t* caps);

/* ------------------------------------------------------------------------
 * The firmware's data store
 * ------------------------------------------------------------------------ */

/**
 * The first block, at most 200 bytes, of a file in the firmware's data store
 * (network function 0x2E, command 0x90: open, then read).
 *
 * @param name         file name, at most 112 characters
 * @param buffer       [out] the firmware's raw answer: completion code, three bytes,
 *                     number of data bytes (16 bits, least significant first), data
 *                     from byte 6 on. Must hold 256 bytes; is not cleared
 * @param buffer_size  at least the number of data bytes plus 6
 * @retval 0   read
 * @retval 1   `name` or `buffer` is null
 * @retval 31  the name is too long, an exchange failed, or the data does not fit;
 *             `buffer` holds what the firmware answered last
 *
 * Traces both exchanges on standard output, byte by byte.
 */
PWRMGT_API uint32_t pwrmgt_ds_file_read(const char* name, uint8_t* buffer, int32_t buffer_size);

/* ------------------------------------------------------------------------
 * Supplies: table and type
 * ------------------------------------------------------------------------ */

/**
 * Empties `PsuPropertyMem` and makes a row of unknown values for each bay.
 *
 * @param db     open connection; stays the caller's
 * @param count  bays; 0 and below leave the table empty
 * @retval 0  done
 * @retval 3  the query failed
 * @retval 6  the old rows could not be deleted
 * @retval 7  no content could be made
 * @retval 4  an insert failed; later bays have no row
 */
PWRMGT_API uint32_t pwrmgt_init_psu_property_table(uint32_t db, int32_t count);

/**
 * Rewrites the row of one bay.
 *
 * @param db   open connection; stays the caller's
 * @param psu  all seven columns; `psu_id` names the row
 * @retval 0  written
 * @retval 3  the query failed
 * @retval 4  no row for that bay
 * @retval 7  no content could be made
 * @retval 5  the update failed
 */
PWRMGT_API uint32_t pwrmgt_update_psu_property_table(uint32_t db, pwrmgt_psu_property_t psu);

/**
 * All supply bays. From `PsuPropertyMem`.
 *
 * @param out  [out] the bays; rows beyond twelve are counted, not stored
 * @retval 0   filled
 * @retval 1   `out` is null
 * @retval 10  not offered on this platform, or `IsBlade` is neither 0 nor 3
 * @retval 2   the database did not open, for the policy or the bays
 * @retval 3   a query failed, of the policy or the bays
 * @retval 8   the policy table or the bay table is empty
 * @retval 17  no supply is present, or none is healthy; `out` is filled
 *
 * Opens and closes its own connections.
 */
PWRMGT_API uint32_t pwrmgt_get_psus_property(pwrmgt_psus_property_t* out);

/**
 * The installed supply type, property "/ac/tavn/power/psu_installed".
 *
 * @return the type byte, 1 = CRPS; 15 when unknown, and on the quoril platform
 *
 * Kept in #g_psu_installed once it was read.
 */
PWRMGT_API uint32_t pwrmgt_get_psu_type_installed(void);

/** As pwrmgt_get_psu_type_installed(). */
PWRMGT_API uint32_t pwrmgt_psu_type_installed(void);

/** 1 when CRPS supplies are installed, else 0. */
PWRMGT_API uint32_t pwrmgt_psu_crps_installed(void);

/**
 * The supply configuration code, property "/ac/tavn/power/psu_config_info".
 *
 * @return the code; 255 when unknown
 *
 * Kept in #g_psu_config_info once it was read.
 */
PWRMGT_API uint32_t pwrmgt_get_psu_config_info(void);

/**
 * Input-voltage range of one supply.
 *
 * @param psu_id  bay number, 1-based
 * @param type    [out] 0 = AC, 1 = class 16, 15 = unknown
 * @param low     [out] volts
 * @param high    [out] volts
 * @retval 0   written
 * @retval 1   a pointer is null
 * @return a code of pwrmgt_get_psus_property(), 17 included; then
 * @retval 19  no such bay, or a bay above 12
 * @retval 3   the bay is empty
 * @retval 31  unknown class; 15, 0 and 0 are written
 */
PWRMGT_API uint32_t pwrmgt_get_psu_voltage_range(int32_t psu_id, uint32_t* type, uint16_t* low,
                                                 uint16_t* high);

/* ------------------------------------------------------------------------
 * Supplies: redundancy mode
 *
 * Modes 0 to 4; 4 holds one supply in reserve. Mode 3 can be stored but has no
 * power of its own.
 * ------------------------------------------------------------------------ */

/**
 * May this machine run in a redundancy mode? Property
 * "/dc/tavn/dm/planar/0/psu/config_type".
 *
 * @param mode  modes 0, 1 and 4 need bit 1, modes 2 and 3 bit 0; above 4 none
 * @return 1 when allowed; 0 when not, or when the property cannot be read
 */
PWRMGT_API uint32_t pwrmgt_redundant_mode_support_check(uint32_t mode);

/**
 * The redundancy mode. From `PowerPolicy`, `RedunMode`.
 *
 * @param out  [out] the mode, also when it is not allowed here
 * @retval 0   written
 * @retval 1   `out` is null
 * @retval 10  not offered on this platform, `IsBlade` is not 0, or the stored mode
 *             is not allowed (then written)
 * @retval 2   the database did not open
 * @retval 3   the query failed
 * @retval 8   the policy table holds no row
 */
PWRMGT_API uint32_t pwrmgt_get_power_redundant_mode(uint32_t* out);

/**
 * Stores the redundancy mode in every row of `PowerPolicy`; a mode that is stored
 * already is not written.
 *
 * @param mode  0..4; a negative mode is stored as its low byte
 * @retval 0   stored
 * @retval 10  `mode` above 4, not offered on this platform, not allowed here, or
 *             `IsBlade` is not 0
 * @retval 2   the database did not open
 * @retval 3   the policy could not be queried
 * @retval 8   the policy table holds no row
 * @retval 7   no content could be made
 * @retval 5   the update failed
 */
PWRMGT_API uint32_t pwrmgt_set_power_redundant_mode(int32_t mode);

/**
 * Chooses the redundancy mode from the hardware with #default_redun_mode_map and
 * stores it.
 *
 * @param hw_config  hardware-configuration code, 1..3
 * @retval 0   stored
 * @retval 10  `hw_config` is 0
 * @retval 17  the supplies cannot be read, none is healthy, or the weakest one's
 *             label is unknown or 8192 W and above
 * @return otherwise a code of pwrmgt_set_power_redundant_mode()
 *
 * Properties below "/ac/dro/therm_config/pci_adapters/": "max_count_bitmap" and,
 * for each slot, "%02d/MaxWatt". Logs each step to syslog, "PSU Config: ".
 */
PWRMGT_API uint32_t pwrmgt_set_redunmode_per_hwconfig(int32_t hw_config);

/* ------------------------------------------------------------------------
 * Supplies: status and power
 *
 * A supply is usable when its bay has a number, it is present, its input is good,
 * it has no fault, and its label output power is known.
 * ------------------------------------------------------------------------ */

/**
 * The weakest usable supply.
 *
 * @param out  [out] that supply. With 8 or 12 bays of which none is usable: zeros
 *             and a label of 65535. With other than 2, 4, 8 or 12 bays: untouched
 * @retval 0  done
 * @return otherwise a code of pwrmgt_get_psus_property(), 17 included; untouched
 */
PWRMGT_API uint32_t pwrmgt_get_smallest_psuInfo(pwrmgt_psu_property_t* out);

/**
 * Status of the supplies in modes 0 to 2.
 *
 * @return configuration 12, 3 or 8: as the feed-count function of that layout. Two
 *         bays: 1 both usable, 0 one, 15 none. Four bays: 15 none usable, 2 one, 3
 *         two in one group, 4 one in each group, 5 three, 6 four (bays 1 and 3 are
 *         a group, 2 and 4 the other). -1 when the supplies cannot be read or are
 *         of another number
 */
PWRMGT_API int32_t pwrmgt_check_psuStatus(void);

/**
 * Status of the supplies in mode 4.
 *
 * @return 1, 2 or 3 usable supplies: that number, plus 3 when as many are present.
 *         4 usable: 7 when as many are present. Else 15. -1 when the supplies
 *         cannot be read or are fewer than 12 rows
 */
PWRMGT_API int32_t pwrmgt_check_psuStatus_for_N_1(void);

/** 12 bays: 8 when bays 1 to 6 and 7 to 12 each have more than one usable supply, else 7; -1
 * otherwise. */
PWRMGT_API int32_t pwrmgt_gox_check_psu_feed_count(void);

/** 3 bays: 9 when any supply is usable, else 15; -1 otherwise. */
PWRMGT_API int32_t pwrmgt_orvane_check_psu_feed_count(void);

/** 8 bays: 1 when more than 4 supplies are usable, else 0; -1 otherwise. */
PWRMGT_API int32_t pwrmgt_check_eight_psu_feed_count(void);

/** Property "/dc/tavn/power/oversubscription_support"; 1 when it cannot be read. */
PWRMGT_API uint32_t pwrmgt_get_oversubscription_prop(void);

/**
 * Power that the supplies can deliver in a redundancy mode.
 *
 * @param mode    0, 1, 2 or 4
 * @param max_dc  [out] `CapMaxDc`, watts; may be null
 * @param power   [out] watts; 65535 = unknown; may be null
 * @param state   [out] redundancy state, 0 upward; 15 = unknown; may be null
 * @retval 0   answered; in a two-domain layout other modes than its own write
 *             neither `power` nor `state`
 * @retval 1   all three pointers are null
 * @retval 2   the database did not open
 * @retval 3   the policy could not be queried
 * @retval 8   the policy table holds no row
 * @retval 10  not offered on this platform, `IsBlade` is not 0, or another mode
 * @retval 17  the supplies cannot be told or the weakest one's label is unknown or
 *             8192 W and above; `max_dc` is written
 *
 * Oversubscribed power is the label times 1.2 (1.0 with CRPS supplies or without
 * oversubscription support), in single precision, cut to whole watts.
 */
PWRMGT_API uint32_t pwrmgt_get_powerInfo_perRedunMode(uint32_t mode, uint32_t* max_dc,
                                                      uint32_t* power, uint8_t* state);

/**
 * Power and state of an 8-bay layout of two domains.
 *
 * @param mode    1, 2 or 4; another mode writes nothing
 * @param power   [out] watts; may be null
 * @param state   [out] redundancy state; may be null
 * @param factor  oversubscription factor
 * @retval 0   answered
 * @retval -1  the weakest label is unknown or 8192 W and above, or not exactly 8 bays
 */
PWRMGT_API int32_t pwrmgt_8_psu_2_domain_power_info(int32_t mode, uint32_t* power, uint8_t* state,
                                                    float factor);

/**
 * Power and state of a 12-bay layout of two domains.
 *
 * @param mode    1 or 2; another mode writes nothing
 * @param power   [out] watts; may be null
 * @param state   [out] redundancy state; untouched in mode 1 when a domain has no
 *                usable supply; may be null
 * @param factor  oversubscription factor
 * @retval 0   answered
 * @retval -1  the weakest label is unknown or 8192 W and above, or not exactly 12 bays
 */
PWRMGT_API int32_t pwrmgt_12_psu_2_domain_power_info(int32_t mode, uint32_t* power, uint8_t* state,
                                                     float factor);

/**
 * Power that the system may draw in its redundancy mode.
 *
 * @param avail  [out] watts; may be null
 * @retval 0   answered
 * @retval 31  quoril platform: the file "/tmp/.ratedPowerData.log" holds no number;
 *             `avail` becomes 0
 * @retval 10  not offered on this platform
 * @return otherwise a code of pwrmgt_get_pwrpolicy_tbl() or
 *         pwrmgt_get_powerInfo_perRedunMode()
 *
 * On the quoril platform the last line of that file counts (watts, 32 bits); what
 * is wrong with it is told on standard error.
 */
PWRMGT_API uint32_t pwrmgt_get_sys_avail_power(uint32_t* avail);

/**
 * The range in which a power cap may lie.
 *
 * @param domain  0 = AC, else DC
 * @param soft    [out] always 0
 * @param max     [out] watts: the available power (low 16 bits), or the stored
 *                maximum, widened, when that is not known; 65535 = not set
 * @param min     [out] watts: the stored minimum, widened; 65535 = not set
 * @retval 0   written
 * @retval 1   a pointer is null
 * @retval 10  not offered on this platform
 * @retval 2   the database did not open
 * @retval 3   the query failed
 * @retval 8   the policy table holds no row
 *
 * Stored limits are widened by both unstress powers while the adapter's is below
 * 550 W and the disks' below 352 W.
 */
PWRMGT_API uint32_t pwrmgt_get_power_capping_ranges(int32_t domain, uint16_t* soft, uint16_t* max,
                                                    uint16_t* min);

/* ------------------------------------------------------------------------
 * Thermal history: writers and periods
 *
 * `db` is an open connection of the caller's; none of these tests it. The current
 * time is read with time().
 * ------------------------------------------------------------------------ */

/**
 * Prepares the thermal tables at daemon start: trims `HistThermal24Hr`, empties
 * `HistThermal24HrMem` and fills it from there, empties `RealTimeThermalMem`.
 *
 * @param db  open connection
 * @retval 0  done
 * @retval 6  the trim or a truncate failed
 * @retval 4  the copy failed
 *
 * Only rows older than 24 hours are trimmed; rows of the future stay.
 */
PWRMGT_API uint32_t thermal_init_thermal_hist_table(uint32_t db);

/**
 * Appends readings of one time to `HistThermal24HrMem`, a row each.
 *
 * @param db      open connection
 * @param record  `count` readings and their time
 * @retval 0   the inserts were tried; one that failed is not told and stops nothing
 * @retval 31  `record` is null, or its count or time is 0; nothing is written
 * @retval 7   no content could be made
 */
PWRMGT_API uint32_t thermal_update_thermal_hist_table(uint32_t db,
                                                      const thermal_hist_update_t* record);

/**
 * Copies working rows newer than the newest saved one into `HistThermal24Hr`.
 *
 * @param db  open connection
 * @retval 0  done
 * @retval 6  the saved rows could not be selected
 * @retval 4  the copy failed
 */
PWRMGT_API uint32_t thermal_save_hist_mem_table(uint32_t db);

/**
 * Trims `HistThermal24HrMem`, then `HistThermal24Hr`, to the last 24 hours.
 *
 * @param db  open connection
 * @retval 0  done, or the clock reads below 86401
 * @retval 6  a delete failed; the second table is then not tried
 *
 * A row stamped with the current time stays.
 */
PWRMGT_API uint32_t thermal_cleanup_hist_mem_table(uint32_t db);

/** Indexes of a thermal query that names none: 60. */
PWRMGT_API int32_t thermal_get_default_total_count(void);

/**
 * Seconds that an index covers.
 *
 * @param period  period code
 * @param count   number of indexes
 * @return the period divided by `count`, cut toward zero; 0 when `count` is 0 or
 *         `period` outside 0..3
 */
PWRMGT_API int32_t thermal_get_secs_per_index(int32_t period, int32_t count);

/** Seconds of a period; 0 for a code above 3. */
PWRMGT_API uint32_t thermal_get_secs_per_period(uint32_t period);

/* ------------------------------------------------------------------------
 * Thermal history: queries
 *
 * A query fills a grid of indexes; an index holds, for each sensor group, what was
 * read after the index before and up to its own time. Instances outside the
 * arrays are skipped. The number of memory modules per socket is the byte property
 * "/dc/tavn/dm/planar/dimm_per_socket", 16 when it is unreadable or 0. Each query
 * opens and closes its own connection and traces its steps on standard output.
 * ------------------------------------------------------------------------ */

/**
 * Temperatures over a past period, oldest index first. From `HistThermal24HrMem`.
 *
 * @param period   0 = last hour, 1 = 6 h, 2 = 12 h, 3 = 24 h; above 3 nothing is
 *                 folded
 * @param samples  [out] caller's array of `*count` records (60 when `*count` is 0)
 * @param count    [in,out] indexes wanted, 0..1440, for an hour 0..60; 0 = 60. On
 *                 return the indexes reached by the ambient query, raised by the
 *                 others; unchanged when nothing was recorded
 * @retval 0   filled; where nothing was read the bytes are 0xFF
 * @retval 1   `samples` is null
 * @retval 10  `*count` above 1440, or above 60 for an hour
 * @retval 2   the database did not open
 * @retval 3   a query failed
 * @retval 8   `*count` was 0 and nothing was recorded
 *
 * The first index ends one index's width after the start of the period, which is
 * cut to a whole minute. A null `count` counts as 0.
 */
PWRMGT_API uint32_t pwrmgt_get_therm_hist(uint32_t period, pwrmgt_therm_sample_t* samples,
                                          uint32_t* count);

/**
 * Temperatures over a span that the caller places, oldest index first.
 *
 * @param end                end of the span, seconds
 * @param minutes            length of the span, at most 1440
 * @param minutes_per_index  1..12
 * @param samples            [out] caller's array of `minutes` / `minutes_per_index`
 *                           records
 * @param count              [out] indexes reached; 0 when nothing was recorded
 * @retval 0   filled; where nothing was read the bytes are 0xFF
 * @retval 1   `samples` is null
 * @retval 11  `minutes_per_index` outside 1..12, or `minutes` above 1440
 * @retval 2   the database did not open
 * @retval 3   a query failed
 * @retval 8   nothing was recorded, or the span holds no index
 *
 * Rows are taken up to the current time, not up to `end`: the last index closes
 * with the first row at or after its time.
 */
PWRMGT_API uint32_t pwrmgt_get_therm_hist_by_timestamp(uint32_t end, int32_t minutes,
                                                       int32_t minutes_per_index,
                                                       pwrmgt_therm_sample_t* samples,
                                                       uint32_t* count);

/**
 * The latest temperatures. From `RealTimeThermalMem`.
 *
 * @param out  [out] each sensor that has a row; the rest, and `lead`, untouched
 * @retval 0  read, also without any row
 * @retval 1  `out` is null
 * @retval 2  the database did not open
 * @retval 3  the query failed
 */
PWRMGT_API uint32_t pwrmgt_get_therm_realtime(pwrmgt_therm_realtime_t* out);

/**
 * Buckets the rows of an open result (`Timestamp`, `Type`, `InstNum`, `Value`,
 * oldest first) into indexes.
 *
 * @param result   open result; stays the caller's
 * @param step     seconds per index
 * @param type     the kind of sensor asked for; rows go where their own type says
 * @param count    [in,out] indexes in `samples`; on return the indexes reached,
 *                 which is all of them
 * @param samples  [in,out] the first one's `tm` is the first index's end
 * @return 1, or 0 when `result` or `step` is 0
 *
 * A row before the index's time is added to the open bucket; one at that time is
 * added and closes it; a later one first closes an open bucket, then passes empty
 * indexes. What is open after the last row is closed into its index.
 */
PWRMGT_API uint32_t thermal_get_samples(uint32_t result, int32_t step, int32_t type,
                                        uint32_t* count, pwrmgt_therm_sample_t* samples);

/**
 * Stores the rows of an open result (`Timestamp`, `Type`, `InstNum`, `Value`) as the
 * latest temperatures. Exhaust rows are skipped.
 *
 * @param result  open result; stays the caller's
 * @param out     [out] each processor, memory module and inlet sensor with a row
 * @return 1, or 0 when `result` is 0
 */
PWRMGT_API uint32_t thermal_get_realtime_data(uint32_t result, pwrmgt_therm_realtime_t* out);

#ifdef __cplusplus
}
#endif

/* ------------------------------------------------------------------------
 * Functions with C++ linkage
 * ------------------------------------------------------------------------ */

#ifdef __cplusplus

/**
 * Is this one of the functions that the quoril platform offers?
 *
 * @param name  exported name of a function; null is ""
 * @retval 1  "pwrmgt_get_realtime_powers", "pwrmgt_get_history_power" or
 *            "pwrmgt_get_duration_summary_power"
 * @retval 0  any other name
 */
PWRMGT_API uint32_t judge_power_function(const char* name);

/**
 * The last minutes of power history as one entry.
 *
 * @param domain   0 = system, 1 = processors, 2 = memory, 3 = one supply
 * @param minutes  length of the window up to now; `2 * minutes + 1` slots are folded
 * @param summary  [out] one record. Domains 0 to 2: as an entry of
 *                 pwrmgt_get_history_power(). Domain 3: `avg` = average DC power,
 *                 `avg2` = average AC power, nothing else is written
 * @param psu      bay number, 1..12; looked at for domain 3 only
 * @retval 0   filled
 * @retval 1   `summary` is null
 * @retval 10  not offered on this platform
 * @retval 2   the database did not open
 * @retval 31  the clock reads below 0
 * @retval 3   `domain` above 3, no such bay, or the query failed
 * @retval 8   nothing recorded (summary untouched), or no valid reading
 *             (untouched for domain 3 only)
 *
 * Opens and closes its own connection.
 */
PWRMGT_API uint32_t pwrmgt_get_duration_summary_power(pwrmgt_pwr_domain domain, int minutes,
                                                      pwrmgt_hist_pwr_sample_t* summary,
                                                      psu_id_t psu);

#endif
