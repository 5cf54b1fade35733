A writer that was killed, or a full disk, may leave a line without its end. The next writer goes on behind it.

  $ JOBS='{"type":"JOB_STATUS","eventTime":1700000000,"eventLog":{"jobId":7,"jStatus":64,"srcCluster":"here"}}'
  $ echo "$JOBS" | wmq encode -o stream
  $ head -c 62 stream > torn
  $ cat torn
  "JOB_STATUS" "10.1" 1700000000 7 64 0 0 0.0000 0 0 0 0 0 "here (no line end)
  $ wmq decode torn
  torn:1: error 46 WMQE_BAD_FORMAT: JOB_STATUS, field srcCluster at byte 57: a quoted string
  [1]
  $ echo "$JOBS" | sed 's/"jobId":7/"jobId":8/' | wmq encode -o torn
  $ echo "$JOBS" | sed 's/"jobId":7/"jobId":9/' | wmq encode -o torn
  $ wmq decode torn | jq -c '.eventLog.jobId'
  torn:1: error 46 WMQE_BAD_FORMAT: a record that was not written to its end
  8
  9
  [1]

One record for each line loses the one behind.

  $ wmq decode --no-split-joined torn | jq -c '.eventLog.jobId'
  torn:1: error 46 WMQE_BAD_FORMAT: JOB_STATUS, field srcJobId at byte 64: a number
  9
  [1]
