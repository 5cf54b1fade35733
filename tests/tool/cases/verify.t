A stream that is whole.

  $ wmq replay --limit 300 --max-size 60K --max-files 20 "$EXAMPLES"/*.swf -o ./whole > /dev/null
  $ wmq verify whole
  2,695 records in 9 files: whole
  $ wmq verify --json whole | jq -c '[.whole, .records, (.files | length), .versions, .earlierJobs, .findings]'
  [true,2695,9,{"10.1":2695},0,[]]

Old files that the limit has removed leave a stream that is whole from there on.

  $ rm "$(ls whole.* | head -n 1)"
  $ wmq verify whole | sed 's/^[0-9,]*/N/'
  N records in 8 files: whole

All that can be amiss.

  $ cat > s.100 <<'END'
  > "LOG_SWITCH" "10.1" 50 1
  > "LOG_SWITCH" "10.1" 40 1
  > "LOG_SWITCH" "11.0" 60 1
  > "JOB_VACATED" "10.1" 61"LOG_SWITCH" "10.1" 62 1
  > "LOG_SWITCH" "10.1" x
  > "END_OF_STREAM" "10.1" 70
  > "LOG_SWITCH" "10.1" 71 1
  > END
  $ cat > s.102 <<'END'
  > "LOG_SWITCH" "10.1" 72 1
  > "END_OF_STREAM" "10.1" 80
  > END
  $ printf '"LOG_SWITCH" "10.1" 9"LOG_SWITCH" "10.1" 81 1\n"LOG_SWITCH" "10.1" 82' > s
  $ wmq verify s
  s.100:2: backwards: LOG_SWITCH of 1970-01-01T00:00:40Z behind one of 1970-01-01T00:00:50Z
  s.100:3: version: LOG_SWITCH of version 11.0
  s.100:4: joined: JOB_VACATED
  s.100:5: malformed: error 46 WMQE_BAD_FORMAT: header of the line at byte 20: an event time
  s.100:6: endInMiddle: lines follow the end of the stream: it was written by a writer that could not rename the file
  s.100: noEnd: the file does not end with END_OF_STREAM
  s.102: missing: s.101 is missing before it
  s:1: torn: LOG_SWITCH, 21 bytes of a record
  s:2: torn: LOG_SWITCH, 22 bytes without a line end
  2 records that were not written to their end
  1 record that another one follows on the same line
  1 line that does not parse
  1 old file without END_OF_STREAM at its end
  1 END_OF_STREAM line with something behind it
  1 gap between files
  1 record older than one before it
  1 record of a later version than is known
  8 records in 3 files: not whole
  [1]
  $ wmq verify --json s | jq -c '[.whole, .counts]'
  [false,{"torn":2,"joined":1,"malformed":1,"noEnd":1,"endInMiddle":1,"endInCurrent":0,"noCurrent":0,"missing":1,"backwards":1,"version":1,"unsubmitted":0,"unstarted":0}]
  [1]
  $ wmq verify --json s | jq -c '.findings[] | [.kind, .file, .line, .offset]'
  ["backwards","s.100",2,25]
  ["version","s.100",3,50]
  ["joined","s.100",4,75]
  ["malformed","s.100",5,123]
  ["endInMiddle","s.100",6,145]
  ["noEnd","s.100",0,0]
  ["missing","s.102",0,0]
  ["torn","s",1,0]
  ["torn","s",2,46]
  [1]

However many threads read it, the report is the same.

  $ wmq verify -j 1 s > one
  [1]
  $ wmq verify -j 4 s | cmp - one
  [1]

A hundred of each kind are listed, and all are counted.

  $ mkdir many && for i in $(seq 250); do echo bad; echo '"LOG_SWITCH" "12.0" 5 5'; done > many/s
  $ wmq verify many/s > report
  [1]
  $ grep -c '^many/s:[0-9]*: malformed: ' report; grep -c '^many/s:[0-9]*: version: ' report; tail -n 3 report
  100
  100
  250 lines that do not parse
  250 records of a later version than is known
  250 records in 1 file: not whole

The writer has died: behind END_OF_STREAM, before it created the next file, in the middle of a line of a file
that another writer has then renamed.

  $ rm s.* && printf '"LOG_SWITCH" "10.1" 50 1\n"END_OF_STREAM" "10.1" 51\n' > s
  $ wmq verify s
  s:2: endInCurrent: the writer died before it could rename the file
  1 END_OF_STREAM at the end of the current file
  1 record in 1 file: not whole
  [1]
  $ mv s s.51
  $ wmq verify s
  s: noCurrent: the writer died before it could create the file, or the file was taken away
  1 current file that is not there
  1 record in 1 file: not whole
  [1]
  $ printf '"LOG_SWITCH" "10.1" 52' > s.52; printf '"LOG_SWITCH" "10.1" 53 1\n' > s
  $ wmq verify s
  s.52:1: torn: LOG_SWITCH, 22 bytes without a line end
  s.52: noEnd: the file does not end with END_OF_STREAM
  1 record that was not written to its end
  1 old file without END_OF_STREAM at its end
  2 records in 3 files: not whole
  [1]

Types that leave their line open are whole without a line end.

  $ printf '"LOG_SWITCH" "10.1" 54 1\n"JOB_VACATED" "10.1" 55' > s; rm s.52
  $ wmq verify s
  3 records in 2 files: whole

Side streams hold one type only, and are checked in the same way.

  $ wmq replay --limit 30 "$EXAMPLES"/*.swf -o ./main --status ./status --pending ./pending > /dev/null
  $ wmq verify status | sed 's/[0-9,]\+/N/g'; wmq verify pending | sed 's/[0-9,]\+/N/g'
  N records in N file: whole
  N records in N file: whole
  $ head -c 100 status >> status
  $ wmq verify status | sed 's/[0-9,]\+/N/g'
  status:N: torn: JOB_STATUSN N bytes without a line end
  N record that was not written to its end
  N records in N file: not whole
  [1]

Jobs: one that was never submitted, and one that was never started. What is below the first number that is
submitted came before the stream.

  $ wmq replay --limit 30 "$EXAMPLES"/*.swf -o ./all > /dev/null
  $ wmq decode --type JOB_NEW,JOB_START,JOB_FINISH all > jobs
  $ first=$(jq -s '[.[] | select(.type == "JOB_START")][2].eventLog.jobId' jobs)
  $ jq -c "select(.type != \"JOB_START\" or .eventLog.jobId != $first)" jobs | wmq encode -o ./a
  $ wmq verify --json a | jq -c '[.counts.unsubmitted, .counts.unstarted, .earlierJobs]'
  [0,1,0]
  [1]
  $ wmq verify a | head -n 1 | sed 's/[0-9]\+/N/g'
  a:N: unstarted: JOB_FINISH of job N, which was not started
  [1]
  $ jq -c "select(.type != \"JOB_NEW\" or .eventLog.jobId != $first)" jobs | wmq encode -o ./b
  $ wmq verify --json b | jq -c '[.counts.unsubmitted, .counts.unstarted, .earlierJobs]'
  [1,1,0]
  [1]
  $ wmq verify b | head -n 1 | sed 's/[0-9]\+/N/g'
  b:N: unsubmitted: JOB_START of job N, which was not submitted
  [1]
  $ first=$(jq -s '[.[] | select(.type == "JOB_NEW")][0].eventLog.jobId' jobs)
  $ jq -c "select(.type != \"JOB_NEW\" or .eventLog.jobId != $first)" jobs | wmq encode -o ./c
  $ wmq verify --json c | jq -c '[.counts.unsubmitted, .counts.unstarted, .earlierJobs]'
  [0,0,1]

Nothing to verify, or nothing that can be.

  $ wmq verify nowhere/s
  wmq: nowhere/s: No such file or directory
  [3]
  $ wmq verify none
  wmq: none: No such file or directory
  [3]
  $ mkdir directory; mkfifo pipe
  $ wmq verify directory
  wmq: directory: Is a directory
  [3]
  $ wmq verify pipe
  wmq: pipe: Not a regular file
  [3]
  $ wmq verify ''; wmq verify -
  wmq verify: PATH: the file name is empty
  Try 'wmq verify --help'.
  wmq verify: PATH: standard input is no stream, but can be decoded (wmq decode)
  Try 'wmq verify --help'.
  [2]
  $ printf '\0\0"LOG_SWITCH" "10.1" 1 1\n\0' > lost; wmq verify lost
  lost:1: torn: 2 bytes of a record
  lost:2: torn: 1 byte without a line end
  2 records that were not written to their end
  1 record in 1 file: not whole
  [1]
  $ printf '"LOG_SWITCH" "10.1" 1 1\n' | gzip | head -c 30 > packed; wmq verify packed
  packed:1: error 46 WMQE_BAD_FORMAT: gzip data is cut short
  0 records in 1 file: not whole
  [1]
  $ : > empty; wmq verify empty
  0 records in 1 file: whole
  $ wmq verify empty > /dev/full
  wmq: standard output: No space left on device
  [3]
