// What a processor refuses to do. Each of these ends in a fault, and so in an error where the thread has the
// translator.
#ifndef STATION_MACHINEFAULTS_H
#define STATION_MACHINEFAULTS_H

namespace Station {

void WriteThroughNull();
void ReadThroughNull();
void CallNull();
void DivideByZero();
void OverflowStack();
void ReadBeyondMappedFile();

// Of the processors that have them in this form.
void RunNoInstruction();
void RunPrivateInstruction();
void RunOverflowInstruction();
void ReadMisaligned();

}  // namespace Station

#endif
