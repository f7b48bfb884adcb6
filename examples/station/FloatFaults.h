// What a floating-point unit refuses to do once it is told to trap: normally such operations give infinities and
// the like. Each of these switches one trap on for its thread, and ends in a fault.
#ifndef STATION_FLOATFAULTS_H
#define STATION_FLOATFAULTS_H

namespace Station {

void DivideFloatByZero();
void DoInvalidFloatOperation();
void OverflowFloat();
void UnderflowFloat();

// Of the processors that have them.
void UseDenormalFloat();
void PopEmptyFloatStack();

}  // namespace Station

#endif
