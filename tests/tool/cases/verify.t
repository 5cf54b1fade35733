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
  s.100: byte 25: backwards: 1970-01-01T00:00:40Z behind 1970-01-01T00:00:50Z
  s.100: byte 50: version: version 11.0
  s.100: byte 75: joined: JOB_VACATED
  s.100: byte 123: malformed: error 46 WMQE_BAD_FORMAT: header of the line at byte 20: an event time
  s.100: byte 171: endInMiddle: lines follow the end of the stream: it was written by a writer that could not rename the file
  s.102: byte 0: noEnd: s.100 has no END_OF_STREAM line at its end
  s: byte 0: torn: 21 bytes of a record
  s.102: byte 0: missing: s.101 is missing before it
  s: byte 0: torn: the last line has no end
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
  $ wmq verify --json s | jq -c '[.whole, .counts.torn, .counts.missing, .findings[0]]'
  [false,2,1,{"kind":"backwards","file":"s.100","offset":25,"text":"1970-01-01T00:00:40Z behind 1970-01-01T00:00:50Z"}]
  [1]

The writer has died behind END_OF_STREAM.

  $ rm s.* && printf '"LOG_SWITCH" "10.1" 50 1\n"END_OF_STREAM" "10.1" 51\n' > s
  $ wmq verify s
  s: byte 0: endInCurrent: the writer died before it could rename the file
  1 END_OF_STREAM at the end of the current file
  1 record in 1 file: not whole
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
  $ jq -c "select(.type != \"JOB_NEW\" or .eventLog.jobId != $first)" jobs | wmq encode -o ./b
  $ wmq verify --json b | jq -c '[.counts.unsubmitted, .counts.unstarted, .earlierJobs]'
  [1,1,0]
  [1]
  $ first=$(jq -s '[.[] | select(.type == "JOB_NEW")][0].eventLog.jobId' jobs)
  $ jq -c "select(.type != \"JOB_NEW\" or .eventLog.jobId != $first)" jobs | wmq encode -o ./c
  $ wmq verify --json c | jq -c '[.counts.unsubmitted, .counts.unstarted, .earlierJobs]'
  [0,0,1]

Nothing to verify.

  $ wmq verify nowhere/s
  wmq: nowhere/s: No such file or directory
  [3]
