// The three parts of the benchmark program.
#ifndef WMQ_BENCH_SUITES_H
#define WMQ_BENCH_SUITES_H

namespace wmq::bench {

void addReading();
void addWriting();
void addTools();

}  // namespace wmq::bench

#endif
