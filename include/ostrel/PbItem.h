/*
 * ostrel/PbItem.h - the contact record: a sparse table of typed fields.
 *
 * A PbItem holds numbered slots. Each slot is null or holds a PbField whose
 * short type text says what it is ("TWC": a work cell phone, "AH": a home
 * address, "P": a photo). Several fields of one kind may exist, in any
 * order, and the order is kept. A field whose type text is empty has been
 * cleared: it keeps its slot (PbItem_at, PbItem_count see it) but finders,
 * enumerators and the codecs pass it over.
 *
 * Field type text, kind first: "N" name, "OF" formatted name, "K" nickname,
 * "B" birthday, "G" organisation, "I" title, "M" note, "P" photo, "S" sound,
 * "OL" logo, "OR" role, "OA" agent, "OI" uid, "OV" revision, "OK" key,
 * "OZ" time zone, "T"+position+device telephone, "TX"+extension extended
 * telephone, "E"+position e-mail, "U"+position URL, "A"+position address,
 * "D"+service messaging account, "XY" name reading, "XGV" group value,
 * "XGI" group id, "XD" local id, "XAN"/"XAT" account name/type, "XS" star.
 * Positions: H home, W work, P neither (C cell for e-mail). Devices: V voice
 * (default), F fax, C cell, E video, P pager, M message, R car, N ISDN,
 * D modem.
 *
 * Slot tables grow to 28 slots first, then in steps of 32, to at most 128;
 * slot indexes must stay in 0..127. Out-of-range indexes are reported
 * through kvo_assert__ and the call gives null or does nothing.
 */
#ifndef OSTREL_PBITEM_H
#define OSTREL_PBITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define PB_VAL_MAX 7      /* text components of a field */
#define PB_FIELD_MAX 128  /* most slots a record can have */
#define PB_FIELD_UNIT 32  /* the slot table grows in multiples of this */
#define PB_FIELD_FIRST 28 /* a first small table gets this many slots */

#define PB_ITEM_TAG 0x0B362C1Eu
#define PB_ENUM_TAG 0x0DE6B209u

/* Bit of PbField.flags: the preferred field of its kind. */
#define PB_FLAG_PREF 0x1

/* Stream value of a field (photo, sound, logo). */
typedef struct PbSval {
  int32_t loc;   /* VPI_LOC_*: 0 inline */
  char fmt[12];  /* "TYPE" word, at most 11 characters, terminated */
  IStrm *strm;   /* owned or null: raw bytes when loc is 0, else 16-bit text
                    (2 bytes a unit, host order, no terminator) naming the
                    URL, content id or file */
} PbSval;

typedef struct PbField {
  KvoWcs desc;              /* the caller's own description; codecs ignore it */
  char type[4];             /* type text; empty: the field is cleared */
  int32_t flags;            /* PB_FLAG_PREF */
  KvoWcs vals[PB_VAL_MAX];  /* text components; simple fields use vals[0] */
  PbSval sval;
} PbField;

typedef struct PbItem {
  uint32_t tag;
  uint32_t reserved;
  int32_t size;      /* slots in fields, 0..PB_FIELD_MAX */
  PbField **fields;  /* owned; each slot owned or null; null when size is 0 */
} PbItem;

/* Walks the valid fields of a record live: the record must outlive it. */
typedef struct PbEnum {
  uint32_t tag;
  PbItem *item;    /* not owned */
  int32_t index;   /* next slot to look at */
  char filter[4];  /* empty: every field; else kind, and position if given */
} PbEnum;

/* ---- Record life ----------------------------------------------------------- */

OSTREL_API PbItem *PbItem_new(PbItem *storage);
/* PbItem_new, then room for at least `size` slots when size is positive. */
OSTREL_API PbItem *PbItem_newx(PbItem *storage, int32_t size);
OSTREL_API void PbItem_delete(PbItem *item);
/* Clears every field in its slot: slots and field objects stay. */
OSTREL_API void PbItem_clear(PbItem *item);
/* Frees every field and the slot table. */
OSTREL_API void PbItem_clearx(PbItem *item);
/* Deep copy keeping other's slot positions; fields of item with no
 * counterpart are cleared in place. Gives item. */
OSTREL_API PbItem *PbItem_assign(PbItem *item, const PbItem *other);
/* A heap copy with the same table size and slot positions. */
OSTREL_API PbItem *PbItem_clone(const PbItem *item);
OSTREL_API void PbItem_trace(PbItem *item);
OSTREL_API void PbItem_tracex(PbItem *item, IStrm *strm, int32_t append);
/* The record as vCard 2.1; lives with the vCard encoder. */
OSTREL_API void PbItem_dump(PbItem *item, IStrm *strm, int32_t append);

/* ---- Slots ------------------------------------------------------------------ */

/* Non-null slots, cleared fields included. */
OSTREL_API int32_t PbItem_count(const PbItem *item);
/* The field in a slot; null for an empty slot or an index outside the table. */
OSTREL_API PbField *PbItem_at(const PbItem *item, int32_t index);
/* The field in slot index, created empty (and the table grown) if needed. */
OSTREL_API PbField *PbItem_write(PbItem *item, int32_t index);
/* A new field in the first null slot (cleared fields are not reused); its
 * slot goes to *outIndex. Null, *outIndex untouched, when all 128 are used. */
OSTREL_API PbField *PbItem_insert(PbItem *item, int32_t *outIndex);
/* Moves a field's pointer; the source slot becomes null, a field at the
 * destination is destroyed. Equal indexes: nothing happens. */
OSTREL_API void PbItem_move(PbItem *item, int32_t dstIndex, int32_t srcIndex);
OSTREL_API void PbItem_movex(PbItem *item, int32_t dstIndex, PbItem *srcItem,
                             int32_t srcIndex);
/* 1 when both records hold equal fields in the same slots (stream contents
 * are not compared), else 0. */
OSTREL_API int32_t PbItem_cmp(const PbItem *item, const PbItem *other);
/* The first valid field whose type begins with fieldType ("TW" finds "TWC"
 * and "TWV"); its slot goes to *outIndex. fieldType must not be empty. */
OSTREL_API PbField *PbItem_find(const PbItem *item, const char *fieldType,
                                int32_t *outIndex);
/* A heap enumerator; end it with PbEnum_delete. */
OSTREL_API PbEnum *PbItem_enums(PbItem *item, const char *filter);

/* ---- Accessors: the first field of a kind --------------------------------- */

OSTREL_API PbField *PbItem_name(const PbItem *item);    /* "N" */
OSTREL_API PbField *PbItem_yomi(const PbItem *item);    /* "XY" */
OSTREL_API PbField *PbItem_nickn(const PbItem *item);   /* "K" */
OSTREL_API PbField *PbItem_bday(const PbItem *item);    /* "B" */
OSTREL_API PbField *PbItem_photo(const PbItem *item);   /* "P" */
OSTREL_API PbField *PbItem_sound(const PbItem *item);   /* "S" */
OSTREL_API PbField *PbItem_org(const PbItem *item);     /* "G" */
OSTREL_API PbField *PbItem_title(const PbItem *item);   /* "I" */
OSTREL_API PbField *PbItem_agent(const PbItem *item);   /* "OA" */
OSTREL_API PbField *PbItem_role(const PbItem *item);    /* "OR" */
OSTREL_API PbField *PbItem_logo(const PbItem *item);    /* "OL" */
OSTREL_API PbField *PbItem_tzone(const PbItem *item);   /* "OZ" */
OSTREL_API PbField *PbItem_note(const PbItem *item);    /* "M" */
OSTREL_API PbField *PbItem_rev(const PbItem *item);     /* "OV" */
OSTREL_API PbField *PbItem_key(const PbItem *item);     /* "OK" */
OSTREL_API PbField *PbItem_uid(const PbItem *item);     /* "OI" */
OSTREL_API PbField *PbItem_grp(const PbItem *item);     /* "XGI" */
OSTREL_API PbField *PbItem_accName(const PbItem *item); /* "XAN" */
OSTREL_API PbField *PbItem_accType(const PbItem *item); /* "XAT" */
OSTREL_API PbField *PbItem_star(const PbItem *item);    /* "XS" */

/* A null or empty type means the whole kind: "T", "A", "E", "U", "D". */
OSTREL_API PbField *PbItem_tel(const PbItem *item, const char *type);
OSTREL_API PbField *PbItem_addr(const PbItem *item, const char *type);
OSTREL_API PbField *PbItem_email(const PbItem *item, const char *type);
OSTREL_API PbField *PbItem_url(const PbItem *item, const char *type);
OSTREL_API PbField *PbItem_im(const PbItem *item, const char *type);

/* Heap enumerators over one kind: "T" (with "TX"), "A", "E", "U", "D". */
OSTREL_API PbEnum *PbItem_tels(PbItem *item);
OSTREL_API PbEnum *PbItem_addrs(PbItem *item);
OSTREL_API PbEnum *PbItem_emails(PbItem *item);
OSTREL_API PbEnum *PbItem_urls(PbItem *item);
OSTREL_API PbEnum *PbItem_ims(PbItem *item);

/* ---- Fields ------------------------------------------------------------------ */

/* &vals[vid]; null (and a report) unless 0 <= vid < PB_VAL_MAX. */
OSTREL_API KvoWcs *PbField_at(PbField *field, int32_t vid);
OSTREL_API PbField *PbField_assign(PbField *field, const PbField *other);
/* Empties everything, type included: the field is no longer valid. */
OSTREL_API void PbField_clear(PbField *field);
/* The same, keeping the type. */
OSTREL_API void PbField_clearx(PbField *field);
/* 1 for a non-null field with a type. */
OSTREL_API int32_t PbField_valid__(const PbField *field);
/* 1 when at least two components are not empty. */
OSTREL_API int32_t PbField_cplex(const PbField *field);
/* 1 when every component is empty and the stream value has no content
 * (desc does not count). */
OSTREL_API int32_t PbField_empty(const PbField *field);

/* ---- Stream values ---------------------------------------------------------- */

OSTREL_API PbSval *PbSval_assign(PbSval *sval, const PbSval *other);
OSTREL_API void PbSval_clear(PbSval *sval);
/* Takes ownership of strm (which may be null), releasing the old stream. */
OSTREL_API void PbSval_fill(PbSval *sval, IStrm *strm);
/* PbSval_fill, then loc and fmt (null fmt: empty; cut to 11 characters). */
OSTREL_API void PbSval_fillx(PbSval *sval, IStrm *strm, int32_t loc, const char *fmt);
/* An empty memory stream, then len units of wtext (len < 0: up to the 0
 * unit; null wtext: nothing), rewound. loc and fmt stay. */
OSTREL_API void PbSval_set(PbSval *sval, const KvoWchar *wtext, int32_t len);
OSTREL_API void PbSval_setx(PbSval *sval, const KvoWchar *wtext, int32_t len, int32_t loc,
                            const char *fmt);
/* 1 when the stream exists and holds at least one byte. */
OSTREL_API int32_t PbSval_valid__(const PbSval *sval);

/* ---- Enumerator --------------------------------------------------------------- */

/* Starts at slot 0. The filter is kept to 3 characters; only the first two
 * count (a filter "TWC" also yields "TWV"); null or "" yields every field. */
OSTREL_API PbEnum *PbEnum_new(PbEnum *storage, PbItem *item, const char *filter);
OSTREL_API void PbEnum_delete(PbEnum *en);
/* 1 and the next match (in *outField, *outIndex where not null), 0 at the
 * end of the table. */
OSTREL_API int32_t PbEnum_next(PbEnum *en, PbField **outField, int32_t *outIndex);
OSTREL_API void PbEnum_reset(PbEnum *en);

/* ---- Type comparators: 1 when the compared characters are equal ----------- */

OSTREL_API int32_t pb_kind_cmp__(const char *a, const char *b); /* a[0] : b[0] */
OSTREL_API int32_t pb_pos_cmp__(const char *a, const char *b);  /* a[1] : b[0] */
OSTREL_API int32_t pb_dev_cmp__(const char *a, const char *b);  /* a[2] : b[0] */
OSTREL_API int32_t pb_oth_cmp__(const char *a, const char *b);  /* a[1] : b[1] */
OSTREL_API int32_t pb_ext_cmp__(const char *a, const char *b);  /* a[1] : b[1] */

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_PBITEM_H */
