// The engine's own families of predicates, which Query sorts the predicates of each pattern into.
#pragma once

#include "VelmarParser/Query/CaptureTransformPredicate.h"
#include "VelmarParser/Query/FilterPredicate.h"
#include "VelmarParser/Query/PropertyPredicate.h"
#include "VelmarParser/Query/PropertySetPredicate.h"
