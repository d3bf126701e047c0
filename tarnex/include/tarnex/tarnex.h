/* tarnex/tarnex.h - the whole foundation API. */
#ifndef TARNEX_TARNEX_H
#define TARNEX_TARNEX_H

#include "tarnex/base.h"
#include "tarnex/charset.h"
#include "tarnex/codec.h"
#include "tarnex/dt.h"
#include "tarnex/gsm.h"
#include "tarnex/lex.h"
#include "tarnex/list.h"
#include "tarnex/str.h"
#include "tarnex/strm.h"
#include "tarnex/text.h"
#include "tarnex/trace.h"
#include "tarnex/xml.h"

#endif /* TARNEX_TARNEX_H */
