Two rotated files and the current one, given in the wrong order.

  $ cat > trace.swf <<'END'
  > ; UnixStartTime: 957000000
  > ; MaxNodes: 2
  > ; MaxProcs: 8
  > ; Queue: 1 long
  > ; Queue: 2 short
  > 1   0    5 3600 8 -1 -1 8 -1 -1 1 1 -1 -1 1 -1 -1 -1
  > 2  10   15  600 4 -1 -1 4 -1 -1 0 2 -1 -1 2 -1 -1 -1
  > 3  20 3700   60 2 -1 -1 2 -1 -1 1 2 -1 -1 2 -1 -1 -1
  > 4  30  100   -1 1 -1 -1 1 -1 -1 5 3 -1 -1 2 -1 -1 -1
  > END
  $ wmq replay trace.swf -o whole
  4 jobs, 35 records, 0 faults
  $ head -n 14 whole > stream.100
  $ sed -n 15,24p whole > stream.101
  $ echo '"END_OF_STREAM" "10.1" 1700000000' >> stream.101
  $ tail -n +25 whole > stream
  $ wmq stats stream stream.101 stream.100
  Stream        3 files, 36 records, 6,532 bytes, 0 malformed lines
  Time span     2000-04-29T09:20:00Z to 2000-04-29T10:23:00Z, 1:03:00
  Versions      10.1 (36 records)
  Jobs          4: 4 ended (1 without a start), 0 running, 0 waiting
  Users         3
  Queues        2
  Run time      4,260 seconds in all
  Core-hours    8.7
  Wait time     median 0:00:15, 95th percentile 1:01:40
  
  Type              Records  Bytes
  JOB_NEW                 4  1,119  ███▍
  JOB_START               3    359  █▏
  JOB_STATUS             11    940  ██▉
  MBD_DIE                 1     61  ▏
  JOB_FINISH              4  1,184  ███▋
  MBD_START               1     51  ▏
  JOB_SIGNAL              1     65  ▎
  JOB_EXECUTE             3    264  ▊
  JOB_START_ACCEPT        3    171  ▌
  END_OF_STREAM           1     34  ▏
  JOB_FINISH2             4  2,284  ███████
  
  Queue  Jobs  Wait median  Wait 95 %  Core-hours
  long      1      0:00:05    0:00:05         8.0  ██████████████████▍
  short     3      0:00:15    1:01:40         0.7  █▋
  
  User   Jobs  Wait median  Wait 95 %  Core-hours
  user1     1      0:00:05    0:00:05         8.0  ██████████████████▍
  user2     2      0:00:15    1:01:40         0.7  █▋
  user3     1            -          -         0.0
  
  Exit status  Meaning      Jobs
            0  success         2  ██████████
           15  signal 15       1  █████
          256  exit code 1     1  █████

Order does not matter, nor do packing and pipes.

  $ wmq stats stream.100 stream.101 stream > expected
  $ zstd -q stream.101
  $ gzip stream.100
  $ wmq stats <(cat stream) stream.101.zst stream.100.gz | cmp - expected
  $ (zcat stream.100.gz; zstdcat stream.101.zst; cat stream) | wmq stats | tail -n +2 | cmp - <(tail -n +2 expected)

The current file may be rotated before its turn comes. Here that is while the other file keeps the first look waiting.

  $ cp stream current
  $ mkfifo old
  $ wmq stats current old | tail -n +2 > actual &
  > exec 3> old
  > mv current current.102
  > echo '"LOG_SWITCH" "10.1" 1900000000 0' > current
  > (zcat stream.100.gz; zstdcat stream.101.zst) >&3
  > exec 3>&-
  > wait
  $ cmp actual <(tail -n +2 expected)

Jobs that have not ended are waiting or running.

  $ head -n 14 whole | wmq stats | sed -n '/^Jobs/,/^Wait/p'
  Jobs          3: 0 ended (0 without a start), 2 running, 1 waiting
  Users         2
  Queues        2
  Run time      0 seconds in all
  Core-hours    0.0
  Wait time     median 0:00:05, 95th percentile 0:00:15

A program gets numbers.

  $ wmq stats --json whole | jq -c 'del(.types, .versions, .queues, .biggestUsers)'
  {"files":1,"records":35,"bytes":6498,"malformedLines":0,"otherLines":0,"firstTime":957000000,"lastTime":957003780,"jobs":4,"coreHours":8.7,"wait":{"jobs":3,"median":15,"percentile95":3700,"exact":true},"waiting":0,"running":0,"ended":4,"endedWithoutStart":1,"runSeconds":4260,"users":3,"exitStatuses":[{"exitStatus":0,"meaning":"success","jobs":2},{"exitStatus":15,"meaning":"signal 15","jobs":1},{"exitStatus":256,"meaning":"exit code 1","jobs":1}]}
  $ wmq stats --json whole | jq -c '.queues[]'
  {"name":"long","jobs":1,"coreHours":8,"wait":{"jobs":1,"median":5,"percentile95":5,"exact":true}}
  {"name":"short","jobs":3,"coreHours":0.7,"wait":{"jobs":2,"median":15,"percentile95":3700,"exact":true}}

A status stream tells what ran when, a pending-reasons stream why jobs waited. Means are over samples, peaks are of one.

  $ wmq replay trace.swf -o again --status status --pending pending
  4 jobs, 35 records, 14 status samples, 13 pending samples, 0 faults
  $ wmq stats status
  Stream        1 file, 14 records, 5,170 bytes, 0 malformed lines
  Time span     2000-04-29T09:25:00Z to 2000-04-29T10:20:00Z, 0:55:00
  Versions      10.1 (14 records)
  
  Type         Records  Bytes
  JOB_STATUS2       14  5,170  ████████████████████
  
  Running jobs from     Samples  Jobs  Peak  Cores  Peak  GiB  Peak
  2000-04-29T09:25:00Z        1   2.0     2   12.0    12    -     -  ████████████████████
  2000-04-29T09:30:00Z        1   2.0     2   12.0    12    -     -  ████████████████████
  2000-04-29T09:35:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T09:40:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T09:45:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T09:50:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T09:55:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T10:00:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T10:05:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T10:10:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T10:15:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  2000-04-29T10:20:00Z        1   1.0     1    8.0     8    -     -  █████████████▍
  all, 0:01:00 each          12   1.2     2    8.7    12    -     -  ██████████████▌
  $ wmq stats pending
  Stream        1 file, 13 records, 3,447 bytes, 0 malformed lines
  Time span     2000-04-29T09:20:00Z to 2000-04-29T10:20:00Z, 1:00:00
  Versions      10.1 (13 records)
  
  Type                 Records  Bytes
  JOB_PENDING_REASONS       13  3,447  ████████████████████
  
  Pending for  Detail                       Samples  Jobs  Peak  Longest average wait  Job-hours
            2  too few processors are free       12   1.0     1               0:59:40        1.0  ██████████████████▌
            3  other jobs come first              1   1.0     1               0:00:00        0.1  █▌
  $ wmq stats --json status | jq -c '.runningJobs | del(.spans), .spans[1]'
  {"samples":12,"jobs":{"mean":1.1666666666666667,"peak":2},"cores":{"mean":8.666666666666666,"peak":12},"memory":{"mean":0,"peak":0},"spanSeconds":60}
  {"time":957000600,"samples":1,"jobs":{"mean":2,"peak":2},"cores":{"mean":12,"peak":12},"memory":{"mean":0,"peak":0}}
  $ wmq stats --json pending | jq -c '.pendingReasons[]'
  {"mainReason":2,"subReason":0,"detail":"too few processors are free","records":12,"samples":12,"jobs":{"mean":1,"peak":1},"longestAverageWait":3580,"jobHours":1}
  {"mainReason":3,"subReason":0,"detail":"other jobs come first","records":1,"samples":1,"jobs":{"mean":1,"peak":1},"longestAverageWait":0,"jobHours":0.08333333333333333}
  $ wmq stats --json status | jq .runningJobs > expected
  $ head -n 5 status > status.1; tail -n +6 status > status.2
  $ wmq stats --json status.2 status.1 | jq .runningJobs | cmp - expected

A line may give any number as the memory of a job.

  $ for memory in inf 1e308 1e308 nan -inf; do
  >   printf '"JOB_STATUS2" "10.1" 1700000000 7 2 "userName" "anna" "ru_maxrss" "%s"\n' $memory
  > done > immense
  $ wmq stats immense | grep '^all'
  all, 0:01:00 each           1   5.0     5    0.0     0  2,861,022,949.2  2,861,022,949.2
  $ wmq stats --json immense | jq -c .runningJobs.memory
  {"mean":3000000000000000,"peak":3000000000000000}

Malformed lines are reported and counted, others only counted.

  $ printf '# comment\n\nnonsense\n"JOB_VACATED" "3.0" 5\n' | wmq stats 2> faults
  Stream        1 file, 1 record, 22 bytes, 1 malformed line, 2 other lines
  Time span     1970-01-01T00:00:05Z to 1970-01-01T00:00:05Z, 0:00:00
  Versions      3.0 (1 record)
  
  Type         Records  Bytes
  JOB_VACATED        1     22  ████████████████████
  [1]
  $ cut -d : -f 1-3 faults
  -:3: error 46 WMQE_BAD_FORMAT
  $ wmq stats /dev/null
  Stream        1 file, 0 records, 0 bytes, 0 malformed lines
  $ wmq stats missing
  wmq: missing: No such file or directory
  Stream        1 file, 0 records, 0 bytes, 0 malformed lines
  [3]

Threads change nothing but the time.

  $ wmq replay --limit 3000 "$EXAMPLES"/*.swf -o many > /dev/null
  $ awk 'NR % 1000 == 7 { print "broken" } { print }' many > mixed
  $ wmq stats -j 1 mixed > expected 2> faults.1
  [1]
  $ for threads in 2 3 8; do wmq stats -j $threads mixed 2> faults | cmp - expected; cmp faults faults.1; done
  $ cat mixed | wmq stats -j 2 2> /dev/null | cmp - expected
  [1]

What a line says behind its header counts only where something of it is told.

  $ printf '"LOG_SWITCH" "10.1" 5 x\n"JOB_START" "10.1" 5 x\n' | wmq stats 2>&1 | head -n 2
  -:2: error 46 WMQE_BAD_FORMAT: JOB_START, field jobId at byte 21: a number
  Stream        1 file, 1 record, 24 bytes, 1 malformed line
  [1]

Records that share a line count each with its own bytes, those behind the beginning of another too.

  $ printf '"JOB_VACATED" "10.1" 5"SBD_JOB_STATUS" "10.1" 6 0 0 0 0 0 0 0 0 0 0 0 0 0 0"LOG_SWITCH" "10.1" 7 0 \n' > shared
  $ printf '"JOB_OCCUPY_REQ" "10.1" 8"JOB_STATUS2" "10.1" 9"JOB_START" "10.1" 1' >> shared
  $ sed -n 10p whole >> shared
  $ wmq stats shared
  shared:2: error 46 WMQE_BAD_FORMAT: JOB_STATUS2, field jobId at byte 22: a number
  shared:2: error 46 WMQE_BAD_FORMAT: a record that was not written to its end
  Stream        1 file, 5 records, 405 bytes, 2 malformed lines
  Time span     1970-01-01T00:00:05Z to 2000-04-29T09:20:20Z, 265833:20:15
  Versions      10.1 (5 records)
  Jobs          1: 0 ended (0 without a start), 0 running, 1 waiting
  Users         1
  Queues        1
  Run time      0 seconds in all
  Core-hours    0.0
  Wait time     median -, 95th percentile -
  
  Type            Records  Bytes
  JOB_NEW               1    280  █████████████▉
  JOB_OCCUPY_REQ        1     25  █▎
  JOB_VACATED           1     22  █▏
  SBD_JOB_STATUS        1     53  ██▋
  LOG_SWITCH            1     25  █▎
  
  Queue  Jobs  Wait median  Wait 95 %  Core-hours
  short     1            -          -         0.0
  
  User   Jobs  Wait median  Wait 95 %  Core-hours
  user2     1            -          -         0.0
  [1]
  $ wmq decode shared 2>&1 > /dev/null
  shared:2: error 46 WMQE_BAD_FORMAT: JOB_STATUS2, field jobId at byte 22: a number
  shared:2: error 46 WMQE_BAD_FORMAT: a record that was not written to its end
  [1]

So does a record behind one that was not written to its end, or lacks its line end, whatever is told of it.

  $ ended=$(grep -m 1 '^"JOB_FINISH"' whole)
  $ printf '"JOB_STATUS" "10.1" 1700000000 7 64 0 0 0.0000 0 0 0 0 0 "her%s\n' "$ended" > behind
  $ printf '%s%s\n' "$(grep -m 1 '^"JOB_NEW"' whole)" "$ended" >> behind
  $ wmq stats behind 2>&1 | head -n 4
  behind:1: error 46 WMQE_BAD_FORMAT: a record that was not written to its end
  behind:2: error 46 WMQE_BAD_FORMAT: a record that was not written to its end
  Stream        1 file, 2 records, 550 bytes, 2 malformed lines
  Time span     2000-04-29T09:22:10Z to 2000-04-29T09:22:10Z, 0:00:00
  [1]
  $ wmq decode behind 2>&1 | cut -c1-76
  behind:1: error 46 WMQE_BAD_FORMAT: a record that was not written to its end
  {"type":"JOB_FINISH","code":10,"version":"10.1","eventTime":957000130,"event
  behind:2: error 46 WMQE_BAD_FORMAT: a record that was not written to its end
  {"type":"JOB_FINISH","code":10,"version":"10.1","eventTime":957000130,"event
  [1]

Records by the hundred that share their lines are told by any number of threads.

  $ for n in $(seq 300); do printf '"JOB_VACATED" "10.1" 5"JOB_START" "10.1" 1'; cat whole; done > large
  $ wmq stats -j 1 large > expected 2> faults.1
  [1]
  $ sed -n 3,7p expected
  Versions      10.1 (10,800 records)
  Jobs          1,200: 1,200 ended (300 without a start), 0 running, 0 waiting
  Users         3
  Queues        2
  Run time      1,278,000 seconds in all
  $ wmq stats -j 3 large 2> faults | cmp - expected; cmp faults faults.1
  $ wmq decode large 2>&1 > /dev/null | cmp - faults
  [1]

Names are shown as a terminal can take them, and survive in JSON.

  $ sed 's/user1/\x1b[31m\xff/g' whole > named
  $ wmq stats named | grep -a '31m'
  \x1b[31m\xff     1      0:00:05    0:00:05         8.0  ██████████████████▍
  $ wmq stats --json named | grep -o '"name":"[^"]*31m[^"]*"'
  "name":"\u001b[31m\udcff"
  $ wmq stats whole > /dev/full
  wmq: standard output: No space left on device
  [3]
