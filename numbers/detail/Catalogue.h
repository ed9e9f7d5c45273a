#ifndef ZULTAV_NUMBERS_DETAIL_CATALOGUE_H
#define ZULTAV_NUMBERS_DETAIL_CATALOGUE_H

class ZULTaVoModule;

namespace zultav::detail {

/// Makes every operator of the module over its value types, in the order of the catalogue, and adds
/// it; the module's own constraint comes just before the operator that names it. The value types
/// and the framework's types and constraints must have their descriptors by then. False when one
/// cannot be made, since memory ran out: without it, another operator might take its place.
bool AddOperators(ZULTaVoModule& module);

}  // namespace zultav::detail

#endif
