/* ostrel/ostrel.h - the whole library API. */
#ifndef OSTREL_ALL_H
#define OSTREL_ALL_H

#include "ostrel/Ostrel.h"
#include "ostrel/VpiEd.h"
#include "ostrel/PbItem.h"
#include "ostrel/GrpItem.h"
#include "ostrel/VcardEd.h"
#include "ostrel/RrItem.h"
#include "ostrel/VrrEd.h"
#include "ostrel/NoteItem.h"
#include "ostrel/VnoteEd.h"
#include "ostrel/BkmItem.h"
#include "ostrel/VbkmEd.h"
#include "ostrel/CalItem.h"
#include "ostrel/VcalEd.h"
#include "ostrel/SmsItem.h"
#include "ostrel/PsmsEd.h"
#include "ostrel/FldItem.h"
#include "ostrel/XmdEd.h"
#include "ostrel/XfldEd.h"
#include "ostrel/AppItem.h"
#include "ostrel/XmmsEd.h"
#include "ostrel/VsmsEd.h"
#include "ostrel/VsmsEd3G.h"
#include "ostrel/MmsItem.h"
#include "ostrel/MmsEd.h"
#include "ostrel/CallItem.h"
#include "ostrel/XcallEd.h"

#endif /* OSTREL_ALL_H */
