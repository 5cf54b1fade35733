A trace becomes the events that a scheduler would have logged, in order of time. Of two jobs in the same second
the submission comes before the start and the start before the end; then the lower job number comes first.

  $ cat > trace.swf <<'END'
  > ; UnixStartTime: 1000000
  > ; MaxNodes: 4
  > ; MaxProcs: 8
  > ; Queue: 1 long
  > ; Partition: 2 thin
  >  1  0  0  10   3  2.5  640   3   60  1024  1  5  6  7  1  2 -1 -1
  >  2  0 10   5   2   -1   -1   2   -1    -1  0  5 -1 -1  9 -1  1 -1
  >  3  5  5  -1  -1   -1   -1   4   -1    -1  5 -1 -1 -1 -1 -1 -1 -1
  >  4 10  0   0   1   -1   -1   1   -1    -1  5  5 -1 -1  1 -1 -1 -1
  > END
  $ wmq replay trace.swf -o stream
  4 jobs, 22 records, 0 faults
  $ wmq decode stream | jq -r '[.eventTime - 1000000, .type, .eventLog.jobId, .eventLog.jStatus // ""] | @tsv'
  0	JOB_NEW	1	
  0	JOB_STATUS	1	1
  0	JOB_NEW	2	
  0	JOB_STATUS	2	1
  0	JOB_START	1	
  0	JOB_STATUS	1	4
  5	JOB_NEW	3	
  5	JOB_STATUS	3	1
  10	JOB_NEW	4	
  10	JOB_STATUS	4	1
  10	JOB_START	2	
  10	JOB_STATUS	2	4
  10	JOB_START	4	
  10	JOB_STATUS	4	4
  10	JOB_STATUS	1	64
  10	JOB_FINISH	1	64
  10	JOB_STATUS	3	32
  10	JOB_FINISH	3	32
  10	JOB_STATUS	4	32
  10	JOB_FINISH	4	32
  15	JOB_STATUS	2	32
  15	JOB_FINISH	2	32

This is all that is said of the first job.

  $ wmq decode --type JOB_NEW stream | head -n 1 | jq -c '.eventLog | with_entries(select(.value |
  >   . != null and . != "" and . != 0 and . != -1))'
  {"jobId":1,"userId":5,"numProcessors":3,"submitTime":1000000,"userName":"user5","rlimits":[-1,-1,-1,-1,-1,1024,-1,-1,-1,60,-1,-1],"hostFactor":1,"queue":"long","resReq":"partition=thin","fromHost":"submit","command":"app7","maxNumProcessors":3,"userGroup":"group6"}
  $ grep -m 1 JOB_START stream
  "JOB_START" "10.1" 1000000 1 0 0 0 1.0 2 "2*node00001" "node00002" "" "" 0 "" 0 "" 2147483647 "" "" 0 "" 0 0 "" -1 0 0 0 0 0
  $ wmq decode --type JOB_FINISH stream | head -n 1 | jq -c '.eventLog | .wmxRusage |= with_entries(select(.value != 0)) |
  >   with_entries(select(.value | . != null and . != "" and . != 0))'
  {"jobId":1,"userId":5,"numProcessors":3,"submitTime":1000000,"startTime":1000000,"endTime":1000010,"userName":"user5","queue":"long","resReq":"partition=thin","fromHost":"submit","numExHosts":3,"execHosts":["node00001","node00001","node00002"],"jStatus":64,"hostFactor":1,"command":"app7","wmxRusage":{"ru_utime":7.5,"ru_maxrss":640,"ru_elapsed":10},"cpuTime":7.5,"maxNumProcessors":3}

Jobs end done or exited, with the status that wait(2) would give. One that was cancelled before it started has no
start, no hosts and a start time of 0; what the trace does not know has the names that readers require.

  $ wmq decode --type JOB_FINISH stream | jq -c '.eventLog | [.jobId, .jStatus, .exitStatus, .startTime, .execHosts]'
  [1,64,0,1000000,["node00001","node00001","node00002"]]
  [3,32,15,0,null]
  [4,32,15,1000010,["node00002"]]
  [2,32,256,1000010,["node00001","node00001"]]
  $ wmq decode --type JOB_FINISH stream | jq -c '.eventLog | [.jobId, .userName, .queue, .fromHost]'
  [1,"user5","long","submit"]
  [3,"unknown","default","submit"]
  [4,"user5","long","submit"]
  [2,"user5","queue9","submit"]

Hosts are given back in the second in which a job ends, for those that start then.

  $ wmq decode --type JOB_START stream | jq -c '.eventLog | [.jobId, .execHosts]'
  [1,["node00001","node00001","node00002"]]
  [2,["node00001","node00001"]]
  [4,["node00002"]]

The same trace gives the same events, wherever they go.

  $ wmq replay trace.swf -o - | cmp - stream
  $ gzip -c trace.swf | wmq replay - -o - | cmp - stream
  $ wmq replay --limit 2 trace.swf -o - | wmq decode --type JOB_NEW | wc -l
  2

Bad lines are reported and skipped.

  $ cat > faulty.swf <<'END'
  > ; UnixStartTime: soon
  > 1 0 0 10 3
  > 2 20 0 1 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 3 10 0 1 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 4 20 0 x 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 5 30 0 1 99999999 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 6 30 0 3000000000 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 7 40 0 1 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > END
  $ wmq replay faulty.swf -o faulty
  faulty.swf:1: error 46 WMQE_BAD_FORMAT: the header's UnixStartTime is no number
  faulty.swf:2: error 46 WMQE_BAD_FORMAT: a job line has 18 columns, this one has 5
  faulty.swf:4: error 46 WMQE_BAD_FORMAT: the job was submitted before the one on the line above
  faulty.swf:5: error 46 WMQE_BAD_FORMAT: column 4 (run time) is no number: 'x'
  faulty.swf:6: error 46 WMQE_BAD_FORMAT: more than 16777216 processors are allocated
  faulty.swf:7: error 46 WMQE_BAD_FORMAT: a time is later than 2038-01-19T03:14:07Z, which no record holds
  2 jobs, 12 records, 6 faults
  [1]

Lines of partial runs repeat what the line of the whole job says.

  $ cat > partial.swf <<'END'
  > 1 0 0 10 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 1 0 0  4 1 -1 -1 1 -1 -1 2 5 -1 -1 1 -1 -1 -1
  > 1 0 6  6 1 -1 -1 1 -1 -1 3 5 -1 -1 1 -1 -1 -1
  > END
  $ wmq replay partial.swf -o partial
  1 job, 6 records, 0 faults

A real trace: the figures are those that its description states.

  $ wmq replay "$EXAMPLES"/SDSC*.swf -o events --max-size 4000000 --max-files 3
  10,000 jobs, 58,898 records, 0 faults
  $ ls events* | wc -l
  3
  $ wmq stats --json events events.* | jq -c '[.jobs, .endedWithoutStart, .runSeconds, .users, (.queues | length),
  >   .malformedLines, .exitStatuses[].jobs]'
  [10000,551,31386372,124,18,0,7597,2403]
  $ wmq decode --type JOB_NEW,JOB_START,JOB_STATUS,JOB_FINISH events.* events | jq .eventTime | sort -nc

Old files are removed down to the number that is wanted, and all that remains can be read.

  $ wmq replay "$EXAMPLES"/SDSC*.swf -o few --max-size 500K --max-files 2
  10,000 jobs, 58,898 records, 0 faults
  $ ls few* | wc -l
  3
  $ wmq decode few few.* > /dev/null

Failures of the output end with 3.

  $ wmq replay trace.swf -o missing/stream
  wmq: missing/stream: error 54 WMQE_SYS: No such file or directory
  [3]
  $ wmq replay trace.swf -o - > /dev/full
  wmq: standard output: No space left on device
  [3]
  $ wmq replay missing.swf -o other
  wmq: missing.swf: No such file or directory
  0 jobs, 0 records, 0 faults
  [3]
  $ (trap '' XFSZ; ulimit -f 100; wmq replay "$EXAMPLES"/SDSC*.swf -o full)
  wmq: ./full: error 54 WMQE_SYS: File too large
  [3]
