Records are printed as they come, across rotations.

  $ switch() { for i in "$@"; do echo "{\"type\":\"LOG_SWITCH\",\"eventTime\":$i,\"eventLog\":{\"lastJobId\":$i}}"; done; }
  $ switch 1 2 | wmq encode -o ./s
  $ echo '"END_OF_STREAM" "10.1" 3' >> s && mv s s.100
  $ switch 4 5 | wmq encode -o ./s
  $ wmq follow --from oldest --until-idle 0 s
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":1,"eventLog":{"lastJobId":1}}
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":2,"eventLog":{"lastJobId":2}}
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":4,"eventLog":{"lastJobId":4}}
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":5,"eventLog":{"lastJobId":5}}
  $ wmq follow --until-idle 0 --raw s
  "LOG_SWITCH" "10.1" 4 4 
  "LOG_SWITCH" "10.1" 5 5 
  $ wmq follow --from end --until-idle 0 s
  $ wmq follow --from oldest --until-idle 0 --since 2 --type LOG_SWITCH s | wc -l
  3
  $ wmq follow --from oldest --until-idle 0 --type JOB_NEW s

A position goes on with exactly the next record, also when the file has been rotated since.

  $ wmq follow --positions --until-idle 0 s | jq -r .position | head -n 1 > position
  $ echo '"END_OF_STREAM" "10.1" 6' >> s && mv s s.101
  $ switch 7 | wmq encode -o ./s
  $ wmq follow --from "$(cat position)" --until-idle 0 --notices s | jq -c '[.notice, .eventTime]'
  [null,5]
  ["rotated",null]
  [null,7]
  $ wmq follow --raw --positions --until-idle 0 s | sed 's/^1:.*\t/POSITION\t/'
  POSITION	"LOG_SWITCH" "10.1" 7 7 

So does a state.

  $ wmq follow --state state --from oldest --until-idle 0 s | wc -l
  5
  $ wmq follow --state state --from oldest --until-idle 0 s
  $ switch 8 | wmq encode -o ./s
  $ wmq follow --state state --until-idle 0 s | jq .eventTime
  8
  $ ls state*
  state

SIGTERM ends it in good order, SIGKILL in bad order; nothing is lost.

  $ wmq follow --state state --raw s > out & follower=$!
  > switch 9 | wmq encode -o ./s
  > until [ -s out ]; do sleep 0.01; done; kill $follower; wait $follower; echo "[$?]"; cat out
  [0]
  "LOG_SWITCH" "10.1" 9 9 
  $ rm out; wmq follow --state state --raw s > out & follower=$!
  > switch 10 | wmq encode -o ./s
  > until [ -s out ]; do sleep 0.01; done; kill -KILL $follower; wait $follower 2> /dev/null
  > switch 11 | wmq encode -o ./s
  > wmq follow --state state --raw --until-idle 0 s > again; cat out again | sort -u
  "LOG_SWITCH" "10.1" 10 10 
  "LOG_SWITCH" "10.1" 11 11 

The position is kept before anything has come: killed at once, it goes on from where it began.

  $ wmq follow --state fresh --from end s & follower=$!
  > until [ -s fresh ]; do sleep 0.01; done; kill -KILL $follower; wait $follower 2> /dev/null
  > switch 12 | wmq encode >> s
  > wmq follow --state fresh --from end --raw --until-idle 0 s
  "LOG_SWITCH" "10.1" 12 12 

A reader that takes nothing does not keep it from ending.

  $ mkfifo blocked; sleep 1000 < blocked & reader=$!
  > for i in $(seq 3000); do cat s; done > long
  > wmq follow --state stuck --raw long > blocked & follower=$!
  > until [ -s stuck ]; do sleep 0.01; done; kill $follower; wait $follower; echo "[$?]"; kill $reader
  > wmq follow --state stuck --raw --until-idle 0 long > rest
  > [ -s rest ] && tail -c "$(stat -c %s rest)" long | cmp - rest
  [0]

A reader that has gone ends it, even when there is nothing to write.

  $ (trap '' PIPE; wmq follow --from oldest s; echo "[$?]" > status) | head -n 1 | jq .eventTime
  1
  $ cat status
  [141]

A command can take each record; when it fails, the position stays before it.

  $ rm state
  $ wmq follow --state state --until-idle 0 --exec 'jq .eventTime' s
  7
  8
  9
  10
  11
  12
  $ switch 13 14 | wmq encode -o ./s
  $ wmq follow --state state --until-idle 0 --exec 'jq .eventTime; exit 4' s
  13
  wmq: jq .eventTime; exit 4: exit status 4
  [3]
  $ wmq follow --state state --until-idle 0 --exec 'test -n "$WMQ_POSITION" && jq .eventTime' s
  13
  14

What is missing or malformed is told, and the exit status is 1.

  $ printf 'bad\n"LOG_SWITCH" "10.1" 1"LOG_SWITCH" "10.1" 15 15 \n' >> s
  $ wmq follow --state state --until-idle 0 s | jq .eventTime
  s: byte 210: error 46 WMQE_BAD_FORMAT: header of the line at byte 0: a quoted type name
  s: byte 214: torn: a record that was not written to its end
  15
  [1]
  $ wmq follow --until-idle 0 --notices s 2>&1 | grep notice
  {"notice":"bad line","file":"s","offset":210,"reason":"header of the line at byte 0: a quoted type name","error":46,"text":"bad"}
  {"notice":"torn","file":"s","offset":214,"reason":"a record that was not written to its end","text":"\"LOG_SWITCH\" \"10.1\" 1"}
  [1]
  $ rm s; switch 16 | wmq encode -o ./s
  $ wmq follow --state state --until-idle 0 s | jq .eventTime
  s: byte 0: gap: the file of the position is gone; what came behind the position, up to this file, is missing (how much is not known)
  16
  [1]

Positions, states and streams that are none.

  $ wmq follow --from here --until-idle 0 s
  wmq: --from: 'here' is no position
  [3]
  $ mkdir directory; mkfifo pipe
  $ wmq follow --until-idle 0 directory
  wmq: directory: Is a directory
  [3]
  $ wmq follow --until-idle 0 pipe
  wmq: pipe: Not a regular file
  [3]
  $ echo nonsense > state
  $ wmq follow --state state --until-idle 0 s
  wmq: state: holds no position
  [3]
  $ wmq follow --until-idle 0 nowhere/s
  wmq: nowhere/s: No such file or directory
  [3]
  $ wmq follow --state nowhere/state --until-idle 0 s
  wmq: nowhere/state: No such file or directory
  [3]
  $ wmq follow --until-idle 0 s > /dev/full
  wmq: standard output: No space left on device
  [3]
