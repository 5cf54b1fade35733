Where output and faults go to one place, they stand in the order of what they tell of.

  $ printf '"LOG_SWITCH" "10.1" %d %d \n' 1 1 2 2 > first
  $ printf '%s\n' 'bad' '"LOG_SWITCH" "10.1" 3 3 ' 'worse' '"LOG_SWITCH" "10.1" 4 4 ' '"LOG_SWITCH" "10.1" 5' > second
  $ short() { grep -Eo '^[a-z.-]+:[0-9]+: error [0-9]+|^[a-z]+: byte [0-9]+|^wmq: [a-z]+|"eventTime":[0-9]+|^"LOG_SWITCH" "10.1" [0-9]+'; }
  $ wmq decode first missing second first 2>&1 | short
  "eventTime":1
  "eventTime":2
  wmq: missing
  second:1: error 46
  "eventTime":3
  second:3: error 46
  "eventTime":4
  second:5: error 46
  "eventTime":1
  "eventTime":2
  [3]
  $ wmq decode --threads 2 first missing second first 2>&1 | short
  "eventTime":1
  "eventTime":2
  wmq: missing
  second:1: error 46
  "eventTime":3
  second:3: error 46
  "eventTime":4
  second:5: error 46
  "eventTime":1
  "eventTime":2
  [3]
  $ cat first second | wmq decode 2>&1 | short
  "eventTime":1
  "eventTime":2
  -:3: error 46
  "eventTime":3
  -:5: error 46
  "eventTime":4
  -:7: error 46
  [1]

A torn record stands behind the whole ones before it on its line.

  $ printf '"JOB_VACATED" "10.1" 6"LOG_SWITCH" "10.1" 7 "LOG_SWITCH" "10.1" 8 8 \n' | wmq decode 2>&1 | short
  "eventTime":6
  -:1: error 46
  "eventTime":8
  [1]

The same the other way round.

  $ wmq decode first > first.json
  $ { cat first.json; echo bad; cat first.json; } > second.json
  $ wmq encode first.json missing second.json first.json 2>&1 | short
  "LOG_SWITCH" "10.1" 1
  "LOG_SWITCH" "10.1" 2
  wmq: missing
  "LOG_SWITCH" "10.1" 1
  "LOG_SWITCH" "10.1" 2
  second.json:3: error 46
  "LOG_SWITCH" "10.1" 1
  "LOG_SWITCH" "10.1" 2
  "LOG_SWITCH" "10.1" 1
  "LOG_SWITCH" "10.1" 2
  [3]

A replay writes as far as it knows what comes next.

  $ job() { echo "$1 $2 0 5 1 -1 -1 1 -1 -1 1 1 1 -1 1 -1 -1 -1"; }
  $ { job 1 10; job 2 20; echo bad; job 3 30; } > t.swf
  $ wmq replay t.swf -o - 2>&1 | grep -Eo '^"JOB_(NEW|FINISH)" "10.1" [0-9]+|^t.swf:[0-9]+: error'
  "JOB_NEW" "10.1" 86410
  "JOB_FINISH" "10.1" 86415
  t.swf:3: error
  "JOB_NEW" "10.1" 86420
  "JOB_FINISH" "10.1" 86425
  "JOB_NEW" "10.1" 86430
  "JOB_FINISH" "10.1" 86435
  [1]

Followers tell of bad lines, and of a command that fails, in their place.

  $ wmq follow --until-idle 0 second 2>&1 | short
  second: byte 0
  "eventTime":3
  second: byte 29
  "eventTime":4
  second: byte 60
  [1]
  $ wmq follow --until-idle 0 --exec 'cat; false' first 2>&1 | short
  "eventTime":1
  wmq: cat
  [3]

What a summary tells comes behind the faults.

  $ wmq stats first missing second 2>&1 | head -n 5 | cut -c 1-24
  second:1: error 46 WMQE_
  second:3: error 46 WMQE_
  wmq: missing: No such fi
  Stream        3 files, 5
  Time span     1970-01-01
  [3]
