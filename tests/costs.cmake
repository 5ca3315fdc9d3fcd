# These wait for time-outs that are real, 25 and 15 seconds; they begin before the others.
set_tests_properties(
  StartupTest.DmsThatIsNeverPublishedIsWaitedForFiveTimesFiveSeconds
  ModemTroubleTest.ASilentModemIsGivenFifteenSecondsAndItsLateAnswerDropped
  PROPERTIES COST 100)
