# Pins the JDK to OpenJDK 17 before FindJava and FindJNI run, so that another
# JDK on the machine is never picked by accident. FindJNI in CMake 3.25 does
# not know JDK 17's layout unless JAVA_HOME names it.
set(LEGIORRUG_JDK_HOME "" CACHE PATH "Home of the OpenJDK 17 to build and run with")
if(NOT LEGIORRUG_JDK_HOME)
  find_program(javac_17 NAMES javac
    HINTS /usr/lib/jvm/java-17-openjdk-amd64/bin ENV JAVA_HOME PATH_SUFFIXES bin
    NO_DEFAULT_PATH)
  if(NOT javac_17)
    find_program(javac_17 NAMES javac REQUIRED)
  endif()
  file(REAL_PATH "${javac_17}" javac_real)
  get_filename_component(jdk_bin "${javac_real}" DIRECTORY)
  get_filename_component(jdk_home "${jdk_bin}" DIRECTORY)
  set(LEGIORRUG_JDK_HOME "${jdk_home}" CACHE PATH "Home of the OpenJDK 17 to build and run with" FORCE)
endif()

set(JAVA_HOME "${LEGIORRUG_JDK_HOME}")
set(ENV{JAVA_HOME} "${LEGIORRUG_JDK_HOME}")
set(Java_JAVAC_EXECUTABLE "${LEGIORRUG_JDK_HOME}/bin/javac" CACHE FILEPATH "" FORCE)
set(Java_JAR_EXECUTABLE "${LEGIORRUG_JDK_HOME}/bin/jar" CACHE FILEPATH "" FORCE)
set(Java_JAVA_EXECUTABLE "${LEGIORRUG_JDK_HOME}/bin/java" CACHE FILEPATH "" FORCE)

find_package(Java 17 REQUIRED COMPONENTS Development)
include(UseJava)
find_package(JNI REQUIRED COMPONENTS JVM)

if(NOT Java_VERSION_MAJOR EQUAL 17)
  message(FATAL_ERROR "OpenJDK 17 is required, found ${Java_VERSION_STRING} in ${LEGIORRUG_JDK_HOME}")
endif()
set(CMAKE_JAVA_COMPILE_FLAGS --release 17 -Xlint:all -Werror)
