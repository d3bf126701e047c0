/* ostrel/ostrel.h - the whole library API. */
#ifndef OSTREL_ALL_H
#define OSTREL_ALL_H

#include "ostrel/Ostrel.h"
#include "ostrel/VpiEd.h"
#include "ostrel/PbItem.h"
#include "ostrel/GrpItem.h"
#include "ostrel/VcardEd.h"
#include "ostrel/SmsItem.h"
#include "ostrel/PsmsEd.h"

#endif /* OSTREL_ALL_H */
