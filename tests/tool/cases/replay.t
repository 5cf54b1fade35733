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
  4 jobs, 36 records, 0 faults
  $ wmq decode stream | jq -r '[.eventTime - 1000000, .type, .eventLog.jobId, .eventLog.jStatus // ""] | @tsv'
  0	MBD_START		
  0	JOB_NEW	1	
  0	JOB_STATUS	1	1
  0	JOB_NEW	2	
  0	JOB_STATUS	2	1
  0	JOB_START	1	
  0	JOB_START_ACCEPT	1	
  0	JOB_EXECUTE	1	
  0	JOB_STATUS	1	4
  5	JOB_NEW	3	
  5	JOB_STATUS	3	1
  10	JOB_NEW	4	
  10	JOB_STATUS	4	1
  10	JOB_START	2	
  10	JOB_START_ACCEPT	2	
  10	JOB_EXECUTE	2	
  10	JOB_STATUS	2	4
  10	JOB_START	4	
  10	JOB_START_ACCEPT	4	
  10	JOB_EXECUTE	4	
  10	JOB_STATUS	4	4
  10	JOB_STATUS	1	64
  10	JOB_FINISH	1	64
  10	JOB_FINISH2	1	64
  10	JOB_SIGNAL	3	
  10	JOB_STATUS	3	32
  10	JOB_FINISH	3	32
  10	JOB_FINISH2	3	32
  10	JOB_SIGNAL	4	
  10	JOB_STATUS	4	32
  10	JOB_FINISH	4	32
  10	JOB_FINISH2	4	32
  15	JOB_STATUS	2	32
  15	JOB_FINISH	2	32
  15	JOB_FINISH2	2	32
  15	MBD_DIE		

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

Those that run and those that wait can be sampled every 300 seconds, into streams of their own. A sample tells of all
that has happened in its second. Jobs wait for those on which they depend, for processors, or for their turn.

  $ cat > waiting.swf <<'END'
  > ; UnixStartTime: 1000200
  > ; MaxProcs: 8
  >  1   0    0 600 8 3 100  8 -1 -1 1 5 -1 -1 1 -1 -1 -1
  >  2   0  600 400 4 -1 -1  4 -1 -1 1 5 -1 -1 1 -1  1 -1
  >  3  10  590 300 4 -1 -1  4 -1 -1 1 5 -1 -1 1 -1 -1 -1
  >  4  20  580  20 4 -1 -1  4 -1 -1 1 5 -1 -1 1 -1 -1 -1
  >  5 700  500  -1 2 -1 -1  2 -1 -1 5 6 -1 -1 1 -1 -1 -1
  > END
  $ wmq replay waiting.swf -o waiting --status status --pending pending
  5 jobs, 44 records, 6 status samples, 4 pending samples, 0 faults
  $ wmq decode status | jq -r '[.eventTime - 1000200, .eventLog.jobId, .eventLog.runtimeDelta, .eventLog.ru_utime,
  >   .eventLog.maxMem, (.eventLog.execHosts | join("+")), (.eventLog.slotUsages | map(tostring) | join("+"))] | @tsv'
  0	1	0	0	800	node00001	8
  300	1	300	12	800	node00001	8
  600	2	0	0	0	node00001	4
  600	3	0	0	0	node00001	4
  600	4	0	0	0	node00001	4
  900	2	300	0	0	node00001	4
  $ wmq decode pending | jq -r '[.eventTime - 1000200, .eventLog.userName, .eventLog.queue, .eventLog.mainReason,
  >   .eventLog.numJobs, .eventLog.num_processors, .eventLog.pendingTime, .eventLog.averagePendingTime, .eventLog.detail] | @tsv'
  0	user5	queue1	1	1	4	0	0	the dependency condition does not hold
  300	user5	queue1	1	1	4	300	300	the dependency condition does not hold
  300	user5	queue1	2	2	8	570	285	too few processors are free
  900	user6	queue1	3	1	2	200	200	other jobs come first
  $ wmq replay waiting.swf -o - | cmp - waiting
  $ wmq replay waiting.swf -o /dev/null --status - | cmp - status
  $ wmq replay waiting.swf -o /dev/null --status - --pending -
  wmq replay: two streams cannot share standard output
  Try 'wmq replay --help'.
  [2]
  $ wmq replay waiting.swf -o again --status missing/status
  wmq: missing/status: error 54 WMQE_SYS: No such file or directory
  [3]
  $ wmq replay waiting.swf -o one --status two --pending two
  wmq replay: two streams cannot share a file
  Try 'wmq replay --help'.
  [2]
  $ mkdir sub; ln -s . sub/link
  $ wmq replay waiting.swf -o one --status ./one
  wmq replay: two streams cannot share a file
  Try 'wmq replay --help'.
  [2]
  $ wmq replay waiting.swf -o one --status two --pending sub/link/..//two
  wmq replay: two streams cannot share a file
  Try 'wmq replay --help'.
  [2]
  $ wmq replay waiting.swf -o one --status two --pending "$PWD/two"
  wmq replay: two streams cannot share a file
  Try 'wmq replay --help'.
  [2]
  $ wmq replay waiting.swf -o other --pending /dev/full
  wmq: /dev/full: error 54 WMQE_SYS: No space left on device; stopped at waiting.swf:4
  [3]
  $ ln -s made loose; touch made.1; ln made.1 hard
  $ wmq replay waiting.swf -o made --status loose
  wmq replay: two streams cannot share a file
  Try 'wmq replay --help'.
  [2]
  $ wmq replay waiting.swf -o made.1 --status hard
  wmq replay: two streams cannot share a file
  Try 'wmq replay --help'.
  [2]
  $ wmq replay --limit 1 waiting.swf -o sub/../waiting.swf
  wmq replay: waiting.swf and sub/../waiting.swf are the same file, which cannot be read and written at once
  Try 'wmq replay --help'.
  [2]

The name of one may not be that of another's old file, which rotating would remove.

  $ wmq replay waiting.swf -o made --status sub/link/../made.7
  wmq replay: the stream sub/link/../made.7 has the name of an old file of made, which rotating removes
  Try 'wmq replay --help'.
  [2]
  $ wmq replay waiting.swf -o made.1 --pending made 2>&1 | head -n 1
  wmq replay: the stream made.1 has the name of an old file of made, which rotating removes
  [2]
  $ wmq replay --limit 1 waiting.swf -o made --status made.s --pending made.7p
  1 job, 11 records, 2 status samples, 0 pending samples, 0 faults

They rotate like the events, and an idle machine is not spoken of, however long it idles.

  $ cat > idle.swf <<'END'
  > 1          0 0 10 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 2 1999999800 0 10 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > END
  $ wmq replay idle.swf -o /dev/null --status - | cut -d ' ' -f 3-4
  86400 1
  2000086200 2
  $ wmq replay "$EXAMPLES"/SDSC*.swf -o /dev/null --status running --max-size 20M --max-files 2
  10,000 jobs, 90,201 records, 104,698 status samples, 0 faults
  $ ls running* | wc -l
  3
  $ wmq stats --json running running.* | jq -c '[.malformedLines, .runningJobs.jobs.peak, .runningJobs.cores.peak]'
  [0,30,1160]

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
  2 jobs, 20 records, 6 faults
  [1]
  $ { echo '; UnixStartTime: -4000000000'; printf '1 2 %070d\xe2\x82\xac\n' 0; printf '1 2 %059dx\n' 0; } | wmq replay - -o -
  -:1: error 46 WMQE_BAD_FORMAT: the header's UnixStartTime is negative
  -:2: error 46 WMQE_BAD_FORMAT: column 3 (wait time) is no number: '000000000000000000000000000000000000000000000000000000000000...'
  -:3: error 46 WMQE_BAD_FORMAT: column 3 (wait time) is no number: '00000000000000000000000000000000000000000000000000000000000x'
  [1]

Lines of partial runs repeat what the line of the whole job says.

  $ cat > partial.swf <<'END'
  > 1 0 0 10 1 -1 -1 1 -1 -1 1 5 -1 -1 1 -1 -1 -1
  > 1 0 0  4 1 -1 -1 1 -1 -1 2 5 -1 -1 1 -1 -1 -1
  > 1 0 6  6 1 -1 -1 1 -1 -1 3 5 -1 -1 1 -1 -1 -1
  > END
  $ wmq replay partial.swf -o partial
  1 job, 11 records, 0 faults

A real trace: the figures are those that its description states.

  $ wmq replay "$EXAMPLES"/SDSC*.swf -o events --max-size 8000000 --max-files 3
  10,000 jobs, 90,201 records, 0 faults
  $ ls events* | wc -l
  3
  $ wmq stats --json events events.* | jq -c '[.jobs, .endedWithoutStart, .runSeconds, .users, (.queues | length),
  >   .malformedLines, .exitStatuses[].jobs]'
  [10000,551,31386372,124,18,0,7597,2403]
  $ wmq decode --type JOB_NEW,JOB_START,JOB_STATUS,JOB_FINISH events.* events | jq .eventTime | sort -nc

Old files are removed down to the number that is wanted, and all that remains can be read.

  $ wmq replay "$EXAMPLES"/SDSC*.swf -o few --max-size 500K --max-files 2
  10,000 jobs, 90,201 records, 0 faults
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
  $ cp "$EXAMPLES"/SDSC*.swf sdsc.swf
  $ (trap '' XFSZ; ulimit -f 100; wmq replay sdsc.swf -o full)
  wmq: ./full: error 54 WMQE_SYS: File too large; stopped at sdsc.swf:105
  [3]
